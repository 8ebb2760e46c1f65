#include "ostra/logs/LogNotice.h"

#include "io/EscapedText.h"
#include "io/PlainFile.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <sstream>
#include <string_view>
#include <system_error>

namespace platform {

namespace {

/// In the order of LogNotice::State.
constexpr std::array<const char*, 3> LOG_STATES = {"running", "done", "failed"};
constexpr std::string_view LOG_BEGIN = "log.";
constexpr std::size_t KEPT = 20;
constexpr std::size_t LOG_NOTICE_MAX_SIZE = 262144;

std::string logNoticePath(const std::string& directory, pid_t process) {
    return directory + '/' + std::string(LOG_BEGIN) + std::to_string(process);
}

}  // namespace

// Three lines a log: its number, state and frames; the path; the error.
void writeLogNotices(const std::string& directory, const std::vector<LogNotice>& notices) {
    if (directory.empty()) {
        return;
    }
    std::string text;
    for (std::size_t i = notices.size() - std::min(notices.size(), KEPT); i < notices.size(); ++i) {
        const LogNotice& notice = notices[i];
        text += std::to_string(notice.number) + ' ' + LOG_STATES[static_cast<std::size_t>(notice.state)] +
                ' ' + std::to_string(notice.frames) + '\n' + escapeText(notice.path) + '\n' +
                escapeText(notice.error) + '\n';
    }
    replaceFile(logNoticePath(directory, getpid()), text);
}

void removeLogNotices(const std::string& directory, pid_t process) {
    unlink(logNoticePath(directory, process).c_str());
}

std::vector<LogNotice> readLogNotices(const std::string& directory, pid_t process) {
    std::vector<LogNotice> notices;
    std::string text;
    if (readPlainFile(logNoticePath(directory, process), text, LOG_NOTICE_MAX_SIZE) != 0) {
        return notices;
    }
    std::istringstream stream(text);
    for (std::string line, path, error;
         std::getline(stream, line) && std::getline(stream, path) && std::getline(stream, error);) {
        LogNotice notice;
        std::string state;
        std::istringstream words(line);
        const bool isRead = bool(words >> notice.number >> state >> notice.frames);
        const auto* const known = std::find(LOG_STATES.begin(), LOG_STATES.end(), state);
        const auto plainPath = unescapeText(path);
        const auto plainError = unescapeText(error);
        if (!isRead || known == LOG_STATES.end() || !plainPath || !plainError) {
            return notices;
        }
        notice.state = static_cast<LogNotice::State>(known - LOG_STATES.begin());
        notice.path = *plainPath;
        notice.error = *plainError;
        notices.push_back(std::move(notice));
    }
    return notices;
}

std::vector<pid_t> processesWithLogs(const std::string& directory) {
    std::vector<pid_t> processes;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(directory, ignored)) {
        const std::string name = entry.path().filename();
        pid_t process = 0;
        if (name.compare(0, LOG_BEGIN.size(), LOG_BEGIN) == 0) {
            const char* const end = name.data() + name.size();
            const auto result = std::from_chars(name.data() + LOG_BEGIN.size(), end, process);
            if (result.ec == std::errc() && result.ptr == end && process > 0) {
                processes.push_back(process);
            }
        }
    }
    std::sort(processes.begin(), processes.end());
    return processes;
}

}  // namespace platform
