#include "android/Phone.h"

#include "android/AdbTrouble.h"
#include "android/ShellWord.h"
#include "settings/PropertyTable.h"

#include <charconv>
#include <chrono>
#include <sstream>
#include <string_view>

namespace control {

namespace {

constexpr int FIRST_LEVEL = 29;  // Android 10

/// What bionic keeps of a property that is not read-only.
constexpr std::size_t MAX_VALUE = 91;

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(" \t\r\n") + 1 - first);
}

bool takeBeginning(std::string_view& text, std::string_view beginning) {
    const bool isThere = text.substr(0, beginning.size()) == beginning;
    text.remove_prefix(isThere ? beginning.size() : 0);
    return isThere;
}

}  // namespace

Application parseApplication(const std::string& text, const std::string& package) {
    Application application;
    std::istringstream lines(text);
    bool isOurs = false;
    for (std::string line; std::getline(lines, line);) {
        std::string_view rest = trimmed(line);
        if (takeBeginning(rest, "Package [")) {
            if (application.isInstalled) {
                break;  // the same again, as it was before an update of the system's
            }
            isOurs = takeBeginning(rest, package) && rest.substr(0, 1) == "]";
            application.isInstalled = isOurs;
        } else if (isOurs && takeBeginning(rest, "primaryCpuAbi=")) {
            application.abi = rest == "null" ? std::string_view() : rest;
        } else if (isOurs && (takeBeginning(rest, "flags=[") || takeBeginning(rest, "pkgFlags=["))) {
            application.isDebuggable =
                application.isDebuggable || rest.find(" DEBUGGABLE ") != std::string_view::npos;
        }
    }
    return application;
}

std::string Phone::describe(const Answer& answer, const std::vector<std::string>& command) const {
    const bool isOfAdb =
        command.front() == "push" || command.front() == "install" || command.front() == "uninstall";
    return describeTrouble(
        answer, mPackage,
        mAdb.line(isOfAdb ? command : std::vector<std::string>{"shell", shellLine(command)}));
}

std::string Phone::findPackage(const std::string& package, bool& isThere) const {
    const std::vector<std::string> ask = {"pm", "path", package};
    const Answer answer = mAdb.shell(ask);
    isThere = answer.out.find("package:") != std::string::npos;
    // It ends with 1, and says nothing, when there is no such package.
    const bool isFine = answer.status == 0 || (answer.status == 1 && answer.err.empty());
    return isFine ? std::string() : describe(answer, ask);
}

std::string Phone::run(const std::vector<std::string>& words, std::string& out) const {
    const Answer answer = mAdb.shell(words);
    out = trimmed(answer.out);
    // Some programs of the device tell of an exception and end as if nothing had been.
    const bool isFine = answer.status == 0 && answer.err.find("Exception") == std::string::npos;
    return isFine ? std::string() : describe(answer, words);
}

std::string Phone::run(const std::vector<std::string>& words) const {
    std::string ignored;
    return run(words, ignored);
}

Answer Phone::runAs(const std::vector<std::string>& words) const {
    std::vector<std::string> all = {"run-as", mPackage};
    all.insert(all.end(), words.begin(), words.end());
    return mAdb.shell(all);
}

std::string Phone::tryAs(const std::vector<std::string>& words) const {
    const Answer answer = runAs(words);
    std::vector<std::string> all = {"run-as", mPackage};
    all.insert(all.end(), words.begin(), words.end());
    return answer.status == 0 ? std::string() : describe(answer, all);
}

std::string Phone::findLevel(int& level) const {
    std::string text;
    std::string error = run({"getprop", "ro.build.version.sdk"}, text);
    level = 0;
    std::from_chars(text.data(), text.data() + text.size(), level);
    if (error.empty() && level < FIRST_LEVEL && !mAdb.isShowing()) {
        error = level == 0 ? "the device does not say which Android it runs"
                           : "the device's Android is too old (API level " + std::to_string(level) +
                                 "): loading layers into applications needs Android 10 (API level 29)";
    }
    return error;
}

std::string Phone::examine(Application& application) const {
    int level = 0;
    std::string error = findLevel(level);
    std::string text;
    const std::vector<std::string> ask = {"dumpsys", "package", mPackage};
    if (error.empty()) {
        error = run(ask, text);
    }
    application = parseApplication(text, mPackage);
    application.level = level;
    if (error.empty() && !application.isInstalled && !mAdb.isShowing()) {
        error = describe({1, {}, "unknown package"}, ask);
    }
    return error;
}

std::string Phone::setProperty(const std::string& name, const std::string& value) const {
    if (value.size() > MAX_VALUE) {
        return "'" + value + "' is too long: a device keeps " + std::to_string(MAX_VALUE) +
               " bytes of a property";
    }
    return run({"setprop", name, value});
}

std::string Phone::setProperties(const std::vector<Assignment>& assignments) const {
    std::string error;
    for (auto assignment = assignments.begin(); assignment != assignments.end() && error.empty();
         ++assignment) {
        error = setProperty(assignment->name, assignment->text);
    }
    return error.empty() ? setProperty(std::string(GENERATION_NAME), freshNumber()) : error;
}

std::string Phone::findProcess(std::string& process) const {
    std::string shown;
    const std::string error = run({"getprop", std::string(PREFIX) + "proc"}, shown);
    if (!error.empty()) {
        return error;
    }
    const bool isFurther = shown.compare(0, mPackage.size() + 1, mPackage + ':') == 0;
    const std::vector<std::string> ask = {"pidof", isFurther ? shown : mPackage};
    const Answer answer = mAdb.shell(ask);
    process = trimmed(std::string_view(answer.out).substr(0, answer.out.find_first_of(" \r\n")));
    // It ends with 1, and says nothing, when there is no such process.
    return answer.status == 0 || answer.err.empty() ? std::string() : describe(answer, ask);
}

std::string freshNumber() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

}  // namespace control
