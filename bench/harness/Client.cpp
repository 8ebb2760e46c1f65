#include "Client.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>

namespace bench {
namespace {

namespace fs = std::filesystem;

constexpr char LAVAPIPE[] = "/usr/share/vulkan/icd.d/lvp_icd.x86_64.json";

bool fail(const Candidate& candidate, const Mode& mode, const std::string& reason) {
    std::cerr << candidate.name << " (" << mode.title << "): " << reason << '\n';
    return false;
}

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Returns the total in a file of callgrind's; negative when there is none.
double totalOf(const fs::path& path) {
    constexpr char TOTALS[] = "totals: ";
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.rfind(TOTALS, 0) == 0) {
            return std::stod(line.substr(sizeof(TOTALS) - 1));
        }
    }
    return -1.0;
}

bool isLoaded(const nlohmann::json& libraries, const std::string& library) {
    return std::any_of(libraries.begin(), libraries.end(), [&](const nlohmann::json& path) {
        return path.get<std::string>().find(library) != std::string::npos;
    });
}

}  // namespace

const std::vector<Mode>& modes(Api api) {
    // The driver draws on threads of its own, whose instructions are not counted. Copies in one instruction
    // for all bytes would be counted once a byte. As fast as it runs, the program shows some thousand frames
    // a second, but ten under callgrind, each with new figures.
    static const Environment wideCopies{{"GLIBC_TUNABLES", "glibc.cpu.hwcaps=-ERMS,-FSRM"}};
    static const std::vector<Mode> vulkan{
        {"free", "Vulkan, as fast as it runs", wideCopies, 0, 100, 1000, 120, 480, 1000, true},
        {"rate", "Vulkan, 60 frames a second", wideCopies, 60, 100, 1000, 120, 480, 60, true},
    };
    if (api == Api::VULKAN) {
        return vulkan;
    }
    // By default the driver does everything on the rendering thread, which we measure: no work moves to the
    // driver's own thread or the rasterizer's threads, and nobody pays for waking those.
    static const Environment noPixels{{"GALLIUM_NOOP", "1"}, {"GALLIUM_THREAD", "0"}};
    static const std::vector<Mode> all{
        {"free", "pixels taken out, as fast as it runs", noPixels, 0, 200, 5000, 100, 1200, 0, false},
        {"rate", "pixels taken out, 60 frames a second", noPixels, 60, 200, 5000, 100, 1200, 60, false},
        {"thread",
         "pixels taken out, as fast as it runs, driver with a thread of its own",
         {{"GALLIUM_NOOP", "1"}},
         0,
         200,
         5000,
         100,
         1200,
         0,
         false},
        {"pixels",
         "with pixels, 60 frames a second",
         {{"GALLIUM_THREAD", "0"}, {"LP_NUM_THREADS", "0"}},
         60,
         20,
         60,
         10,
         30,
         60,
         true,
         false},
        {"figures",
         "with pixels, new figures in every frame",
         {{"GALLIUM_THREAD", "0"}, {"LP_NUM_THREADS", "0"}},
         8,
         8,
         32,
         8,
         16,
         8,
         true,
         false},
        {"pacing",
         "with pixels, 1920 by 1080, a program that shows 60 frames a second",
         {},
         0,
         60,
         600,
         0,
         0,
         0,
         true,
         false,
         60,
         {"--width", "1920", "--height", "1080"}},
    };
    return all;
}

std::string Client::path(const Candidate& candidate, const Mode& mode, const std::string& suffix) const {
    std::string name = mode.name + '-' + candidate.name;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '-');
    return mFolder + '/' + name + suffix;
}

bool Client::runClient(const Candidate& candidate, const Mode& mode, int rate, Command tool,
                       const Command& options) const {
    Environment environment = mode.environment;
    environment.insert(candidate.environment.begin(), candidate.environment.end());
    // No user settings, and swaps that never wait.
    environment.insert({{"HOME", mFolder},
                        {"XDG_CONFIG_HOME", mFolder},
                        {"LIBGL_ALWAYS_SOFTWARE", "1"},
                        {"VK_ICD_FILENAMES", LAVAPIPE},
                        {"vblank_mode", "0"}});
    Command command = candidate.launcher;
    command.insert(command.end(), tool.begin(), tool.end());
    command.insert(command.end(), {mProgram, "--rate", std::to_string(rate)});
    command.insert(command.end(), options.begin(), options.end());
    const std::string log = path(candidate, mode, ".log");
    const int status = run(command, environmentWith(environment), log);
    return status == 0 || fail(candidate, mode, "exit status " + std::to_string(status) + ", see " + log);
}

bool Client::measure(const Candidate& candidate, const Mode& mode, Times& times) const {
    const std::string report = path(candidate, mode, ".json");
    fs::remove(report);
    Command options{"--warm-up", std::to_string(mode.warmUp),
                    "--frames",  std::to_string(mode.frames),
                    "--report",  report};
    options.insert(options.end(), mode.size.begin(), mode.size.end());
    if (mode.pace > 0) {
        options.insert(options.end(), {"--pace", std::to_string(mode.pace)});
    }
    if (mode.hasPixels) {
        options.insert(options.end(), {"--picture", path(candidate, mode, ".ppm")});
    }
    if (!runClient(candidate, mode, mode.rate, {}, options)) {
        return false;
    }
    const nlohmann::json figures = nlohmann::json::parse(contents(report), nullptr, false);
    if (!figures.is_object()) {
        return fail(candidate, mode, "no figures in " + report);
    }
    times = {figures.at("swap_us").get<double>(), figures.at("frame_us").get<double>(),
             figures.at("intervals_ms").get<std::vector<double>>()};
    return candidate.library.empty() || isLoaded(figures.at("libraries"), candidate.library) ||
           fail(candidate, mode, candidate.library + " is not in the program");
}

bool Client::count(const Candidate& candidate, const Mode& mode, double& instructions) const {
    // callgrind writes FILE.PART-THREAD for the client's dump, and FILE-THREAD for the rest.
    const std::string out = path(candidate, mode, ".callgrind");
    const std::string rendering = out + ".1-01";
    fs::remove(rendering);
    const Command tool{"valgrind", "--tool=callgrind", "--instr-atstart=no", "--separate-threads=yes",
                       "--callgrind-out-file=" + out};
    const Command options{"--warm-up", std::to_string(mode.countedWarmUp), "--frames",
                          std::to_string(mode.countedFrames)};
    if (!runClient(candidate, mode, mode.countedRate, tool, options)) {
        return false;
    }
    const double total = totalOf(rendering);
    instructions = total / mode.countedFrames;
    return total > 0.0 || fail(candidate, mode, "no count in " + rendering);
}

bool Client::compare(const Candidate& bare, const Candidate& candidate, const Mode& mode,
                     double& share) const {
    constexpr std::size_t PIXEL = 3;
    const std::string before = contents(path(bare, mode, ".ppm"));
    const std::string after = contents(path(candidate, mode, ".ppm"));
    if (before.size() != after.size() || before.size() < PIXEL) {
        return fail(candidate, mode, "the pictures are not of one size");
    }
    // Compares from the end, where the pixels are.
    std::size_t changed = 0;
    for (std::size_t i = before.size() % PIXEL; i < before.size(); i += PIXEL) {
        changed += before.compare(i, PIXEL, after, i, PIXEL) == 0 ? 0u : 1u;
    }
    share = 1000.0 * static_cast<double>(changed * PIXEL) / static_cast<double>(before.size());
    return true;
}

}  // namespace bench
