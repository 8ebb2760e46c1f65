#include "android/ShellWord.h"
#include "android/Verbs.h"
#include "settings/PropertyTable.h"

#include <utility>

namespace control::android {

std::string readAssignments(const std::vector<std::string>& words, std::vector<Assignment>& assignments) {
    assignments.assign(words.size() / 2, {});
    std::string error;
    for (std::size_t i = 0; i + 1 < words.size() && error.empty(); i += 2) {
        error = readAssignment(words[i], words[i + 1], false, assignments[i / 2]);
    }
    return error.empty() && words.size() % 2 != 0
               ? "'" + words.back() + "' has no value; expected NAME VALUE in turns"
               : error;
}

std::string set(const Session& session) {
    std::vector<Assignment> assignments;
    std::string error = readAssignments(session.options.words, assignments);
    int ignored = 0;
    error = error.empty() ? session.phone.findLevel(ignored) : error;
    return error.empty() ? session.phone.setProperties(assignments) : error;
}

namespace {

std::string turnOnLayers(const Session& session) {
    const std::string values[] = {"1", session.options.package, GLES_FILE, VULKAN_NAME, LAYER_PACKAGE};
    bool isApk = false;
    std::string error = session.phone.findPackage(LAYER_PACKAGE, isApk);
    isApk = isApk || (session.phone.adb().isShowing() && !session.options.apk.empty());
    for (std::size_t i = 0; i < std::size(SETTINGS) && error.empty(); ++i) {
        const bool isWanted = isApk || values[i] != LAYER_PACKAGE;
        error = session.phone.run(
            isWanted ? std::vector<std::string>{"settings", "put", "global", SETTINGS[i], values[i]}
                     : std::vector<std::string>{"settings", "delete", "global", SETTINGS[i]});
    }
    return error;
}

/// Ends the application and starts what it has in the launcher.
std::string restart(const Session& session) {
    const std::string& package = session.options.package;
    std::string error = session.phone.run({"am", "force-stop", package});
    if (!error.empty()) {
        return error;
    }
    const std::string line = "am start -n \"$(" +
                             shellLine({"cmd", "package", "resolve-activity", "--brief", package}) +
                             " | tail -n 1)\"";
    const Answer answer = session.phone.adb().shellText(line);
    const bool isStarted = answer.status == 0 && answer.err.find("Error") == std::string::npos &&
                           answer.out.find("Error") == std::string::npos;
    return isStarted ? std::string() : session.phone.describe(answer, {"am", "start", package});
}

}  // namespace

std::string start(const Session& session) {
    const std::string& package = session.options.package;
    std::vector<Assignment> wanted;
    std::string error = readAssignments(session.options.words, wanted);
    Application application;
    error = error.empty() ? session.phone.examine(application) : error;
    if (!error.empty()) {
        return error;
    }
    if (!application.isDebuggable && !session.phone.adb().isShowing()) {
        session.err << "kordanixctl: " << package
                    << " is not debuggable: the device loads layers into it only if its manifest has the "
                       "meta-data com.android.graphics.injectLayers.enable, and Android is 11 or later\n";
    }
    error = turnOnLayers(session);
    if (!error.empty()) {
        return error;
    }
    std::vector<Assignment> all = {{std::string(PREFIX) + "api", "0"},
                                   {std::string(PREFIX) + "proc", package},
                                   {std::string(PREFIX) + "status", "true"}};
    // What was asked for comes later, and so wins.
    all.insert(all.end(), wanted.begin(), wanted.end());
    error = session.phone.setProperties(all);
    error = error.empty() ? restart(session) : error;
    if (error.empty()) {
        session.out << package << " starts with the overlay. If it draws with Vulkan: 'kordanixctl android "
                    << package << " set api 1'. 'kordanixctl android " << package
                    << " off' ends it all; until then it is there at every start of the application.\n";
    }
    return error;
}

}  // namespace control::android
