#include "runs/LogPlan.h"

#include "io/EscapedText.h"
#include "io/PlainFile.h"

#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <locale>
#include <sstream>

namespace platform {

namespace {

constexpr const char* FILE_NAME = "/log.plan";
constexpr std::size_t PLAN_MAX_BYTES = 32768;

/// An absolute path in the environment; empty for anything else.
std::string pathOf(const char* variable) {
    const char* const text = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    return text != nullptr && *text == '/' ? text : "";
}

}  // namespace

std::string logsFolder(std::string& error) {
    std::string data = pathOf("XDG_DATA_HOME");
    if (data.empty()) {
        const std::string home = pathOf("HOME");
        if (home.empty()) {
            error = "HOME does not say where the folder for logs and pictures is";
            return {};
        }
        data = home + "/.local/share";
    }
    return data + "/kordanix/logs";
}

// A line each: the folder, whether a log begins by itself, after how long, and for how long or "-".
int writeLogPlan(const std::string& runFolder, const LogPlan& plan) {
    return replaceFile(runFolder + FILE_NAME, escapeText(plan.folder) + '\n' +
                                                  (plan.isStarted ? "1 " : "0 ") +
                                                  std::to_string(plan.afterMs) + ' ' +
                                                  (plan.forMs ? std::to_string(*plan.forMs) : "-") + '\n');
}

bool hasLogPlan(const std::string& runFolder) {
    return access((runFolder + FILE_NAME).c_str(), F_OK) == 0;
}

LogPlan readLogPlan(const std::string& runFolder) {
    std::string text;
    std::string folder;
    std::string length;
    LogPlan plan;
    if (readPlainFile(runFolder + FILE_NAME, text, PLAN_MAX_BYTES) != 0) {
        return {};
    }
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    const bool isWhole = std::getline(stream, folder) && stream >> plan.isStarted >> plan.afterMs >> length;
    const auto plain = unescapeText(folder);
    if (!isWhole || !plain || (!plain->empty() && plain->front() != '/')) {
        return {};
    }
    plan.folder = *plain;
    if (length != "-") {
        std::uint32_t milliseconds = 0;
        const char* const end = length.data() + length.size();
        if (std::from_chars(length.data(), end, milliseconds).ptr != end) {
            return {};
        }
        plan.forMs = milliseconds;
    }
    return plan;
}

}  // namespace platform
