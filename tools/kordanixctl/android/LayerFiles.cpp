#include "android/ShellWord.h"
#include "android/Verbs.h"
#include "settings/PropertyTable.h"

#include <unistd.h>

#include <filesystem>
#include <sstream>

namespace control::android {

namespace {

constexpr const char* HANDOVER = "/data/local/tmp/";

/// Android 11; older ones do not know the option that lets applications find the APK.
constexpr int FIRST_WITH_QUERIES = 30;

std::string findAbi(const Session& session, const Application& application, std::string& abi) {
    abi = session.options.abi.empty() ? application.abi : session.options.abi;
    if (!abi.empty()) {
        return {};
    }
    std::string error = session.phone.run({"getprop", "ro.product.cpu.abi"}, abi);
    if (session.phone.adb().isShowing()) {
        session.phone.adb().explain(
            "ABI is what the package's primaryCpuAbi says; if that is null, what the last command says");
        abi = "ABI";
    }
    return error;
}

/// The layers' files for the ABI; only their names while commands are shown and the ABI is not known.
std::string findFiles(const Session& session, const std::string& abi, std::vector<std::string>& files) {
    const std::filesystem::path folder = std::filesystem::path(session.options.layers) / abi;
    std::error_code missing;
    for (const char* const name : {GLES_FILE, VULKAN_FILE}) {
        if (abi == "ABI" || std::filesystem::is_regular_file(folder / name, missing)) {
            files.push_back(folder / name);
        }
    }
    return files.empty()
               ? folder.string() + ": has neither " + GLES_FILE + " nor " + VULKAN_FILE + ", and " +
                     session.options.package + " runs as " + abi + "; scripts/android-layers.sh builds them"
               : std::string();
}

/// Copies one file into the application's data folder. A file that the running application has loaded must
/// not change, so the new one takes its name.
std::string copyFile(const Session& session, const std::string& path) {
    const Phone& phone = session.phone;
    const std::string name = std::filesystem::path(path).filename();
    const std::string handed = HANDOVER + name;
    const std::string part = name + ".part";
    const Answer pushed = phone.adb().run({"push", path, handed});
    if (pushed.status != 0) {
        return phone.describe(pushed, {"push", path, handed});
    }
    std::string error = phone.tryAs({"cp", handed, part});
    error = error.empty() ? phone.tryAs({"mv", "-f", part, name}) : error;
    const std::string cleared = phone.run({"rm", "-f", handed});
    return error.empty() ? cleared : error;
}

std::string installApk(const Session& session, const Application& application, const std::string& abi) {
    std::vector<std::string> words = {"install", "-r", "--abi", abi};
    if (application.level >= FIRST_WITH_QUERIES || session.phone.adb().isShowing()) {
        words.emplace_back("--force-queryable");
    }
    words.push_back(session.options.apk);
    const Answer answer = session.phone.adb().run(words);
    const bool isFine = answer.status == 0 && answer.out.find("Failure") == std::string::npos;
    return isFine ? std::string() : session.phone.describe(answer, words);
}

std::string clearProperties(const Phone& phone) {
    std::string all;
    std::string error = phone.run({"getprop"}, all);
    if (phone.adb().isShowing()) {
        phone.adb().explain("each property in that list that begins with " + std::string(PREFIX) +
                            ", such as:");
        all = "[" + std::string(PREFIX) + "status]: [true]";
    }
    std::vector<Assignment> empty;
    std::istringstream lines(all);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t end = line.find("]: [");
        const bool isSet = line.substr(0, PREFIX.size() + 1) == "[" + std::string(PREFIX) &&
                           end != std::string::npos && line.compare(end, std::string::npos, "]: []") != 0;
        const std::string name = isSet ? line.substr(1, end - 1) : std::string();
        if (isSet && name != GENERATION_NAME) {
            empty.push_back({name, {}});
        }
    }
    error = error.empty() ? phone.setProperties(empty) : error;
    return error.empty() ? phone.setProperty(std::string(GENERATION_NAME), {}) : error;
}

std::string removeFiles(const Session& session, const Application& application) {
    if (!application.isInstalled && !session.phone.adb().isShowing()) {
        return {};  // they went with it
    }
    std::vector<std::string> words = {"rm", "-rf"};
    for (const std::string name : {GLES_FILE, VULKAN_FILE}) {
        words.push_back(name);
        words.push_back(name + ".part");
    }
    if (!session.options.keepsDumps) {
        words.push_back(std::string(FILES) + '/' + OWN_FOLDER);
    }
    const Answer answer = session.phone.runAs(words);
    // Where nothing could be put, there is nothing to remove.
    const bool isFine = answer.status == 0 || !application.isDebuggable;
    return isFine ? std::string() : session.phone.describe(answer, words);
}

}  // namespace

std::string install(const Session& session) {
    const AndroidOptions& options = session.options;
    if (options.apk.empty() == options.layers.empty()) {
        return "install needs either --layers DIR, the folder with a folder for each ABI, or --apk FILE, the "
               "layer's APK";
    }
    if (!options.apk.empty() && access(options.apk.c_str(), R_OK) != 0) {
        return options.apk + ": cannot be read; scripts/android-apk.sh makes it";
    }
    Application application;
    std::string abi;
    std::string error = session.phone.examine(application);
    error = error.empty() ? findAbi(session, application, abi) : error;
    std::vector<std::string> files;
    if (error.empty() && !options.apk.empty()) {
        error = installApk(session, application, abi);
    } else if (error.empty()) {
        error = findFiles(session, abi, files);
    }
    for (auto file = files.begin(); file != files.end() && error.empty(); ++file) {
        error = copyFile(session, *file);
    }
    if (error.empty()) {
        session.out << "Installed for " << options.package << " (" << abi << "). 'kordanixctl android "
                    << options.package << " start' turns the overlay on.\n";
    }
    return error;
}

std::string off(const Session& session) {
    const Phone& phone = session.phone;
    int level = 0;
    std::string error = phone.findLevel(level);
    if (!error.empty()) {
        return error;
    }
    // Each of them is tried, whatever becomes of the others.
    const auto note = [&](const std::string& more) {
        error += error.empty() || more.empty() ? more : "\nkordanixctl: " + more;
    };
    note(clearProperties(phone));
    for (const char* const name : SETTINGS) {
        note(phone.run({"settings", "delete", "global", name}));
    }
    std::string text;
    note(phone.run({"dumpsys", "package", session.options.package}, text));
    note(removeFiles(session, parseApplication(text, session.options.package)));
    // Only an install that was broken off left them there.
    note(phone.run({"rm", "-f", std::string(HANDOVER) + GLES_FILE, std::string(HANDOVER) + VULKAN_FILE}));
    bool hasApk = false;
    note(phone.findPackage(LAYER_PACKAGE, hasApk));
    if (phone.adb().isShowing() || hasApk) {
        const Answer removed = phone.adb().run({"uninstall", LAYER_PACKAGE});
        note(removed.status == 0 ? std::string() : phone.describe(removed, {"uninstall", LAYER_PACKAGE}));
    }
    if (error.empty()) {
        session.out << "The overlay is off, and its settings, properties and files are gone. A running "
                    << session.options.package << " keeps the layer loaded, idle, until it ends.\n";
    }
    return error;
}

}  // namespace control::android
