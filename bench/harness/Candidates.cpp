#include "Candidates.h"

#include <filesystem>
#include <iostream>

namespace bench {

std::vector<Candidate> candidates(Api api, const std::string& build, const std::string& runtime) {
    if (api == Api::VULKAN) {
        return {
            {BARE, {}, {}, ""},
            {OURS,
             {},
             {{"XDG_CONFIG_DIRS", build + "/lib/kordanix:/etc/xdg"},
              {"KORDANIX", "1"},
              {"KORDANIX_RUNTIME_DIR", runtime}},
             "libkordanix-vulkan.so"},
            {MANGOHUD, {"mangohud"}, {}, "libMangoHud.so"},
            {MANGOHUD_RATE, {"mangohud"}, {{"MANGOHUD_CONFIG", "fps_only"}}, "libMangoHud.so"},
            {"Mesa's overlay", {}, {{"VK_INSTANCE_LAYERS", "VK_LAYER_MESA_overlay"}}, "MESA_overlay"},
        };
    }
    const std::string shim = build + "/lib/kordanix/libkordanix-preload.so";
    return {
        {BARE, {}, {}, ""},
        {OURS, {}, {{"LD_PRELOAD", shim}, {"KORDANIX_RUNTIME_DIR", runtime}}, "libkordanix-opengl.so"},
        {MANGOHUD, {"mangohud"}, {}, "libMangoHud.so"},
        {MANGOHUD_RATE, {"mangohud"}, {{"MANGOHUD_CONFIG", "fps_only"}}, "libMangoHud.so"},
        {"Gallium HUD, fps,cpu", {}, {{"GALLIUM_HUD", "fps,cpu"}}, ""},
        {"Gallium HUD, simple,fps", {}, {{"GALLIUM_HUD", "simple,fps"}}, ""},
    };
}

std::vector<Candidate> observed(const Candidate& ours, const std::string& build) {
    const auto beside = [&](const std::string& verb) {
        return Command{"sh", "-c",
                       "for i in $(seq 600); do '" + build + "/bin/kordanixctl' " + verb +
                           " && break; sleep 0.1; done >\"$HOME/" + verb.substr(0, verb.find(' ')) +
                           ".out\" 2>&1 & exec \"$@\"",
                       "sh"};
    };
    return {{std::string(OURS) + ", watched", beside("watch --json"), ours.environment, ours.library},
            {std::string(OURS) + ", logged", beside("log start"), ours.environment, ours.library}};
}

bool enableOurs(Api api, const std::string& build, const std::string& runtime, const std::string& program) {
    std::filesystem::create_directories(runtime);
    std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);
    const std::string log = runtime + "/set.log";
    const Environment environment = environmentWith({{"KORDANIX_RUNTIME_DIR", runtime}});
    const Command settings[] = {{"debug.kordanix.status", "true"},
                                {"debug.kordanix.proc", program},
                                {"debug.kordanix.api", api == Api::VULKAN ? "1" : "0"}};
    for (const Command& setting : settings) {
        const int status = run({build + "/bin/kordanixctl", "set", setting[0], setting[1]}, environment, log);
        if (status != 0) {
            std::cerr << "kordanixctl set " << setting[0] << ": exit status " << status << ", see " << log
                      << '\n';
            return false;
        }
    }
    return true;
}

}  // namespace bench
