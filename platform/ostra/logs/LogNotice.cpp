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
constexpr std::array<const char*, 3> STATES = {"running", "done", "failed"};
constexpr std::string_view NAME_BEGIN = "log.";
constexpr std::size_t KEPT = 20;
constexpr std::size_t MAX_SIZE = 262144;

std::string noticePath(const std::string& directory, pid_t process) {
    return directory + '/' + std::string(NAME_BEGIN) + std::to_string(process);
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
        text += std::to_string(notice.number) + ' ' + STATES[static_cast<std::size_t>(notice.state)] + ' ' +
                std::to_string(notice.frames) + '\n' + escapeText(notice.path) + '\n' +
                escapeText(notice.error) + '\n';
    }
    replaceFile(noticePath(directory, getpid()), text);
}

void removeLogNotices(const std::string& directory, pid_t process) {
    unlink(noticePath(directory, process).c_str());
}

std::vector<LogNotice> readLogNotices(const std::string& directory, pid_t process) {
    std::vector<LogNotice> notices;
    std::string text;
    if (readPlainFile(noticePath(directory, process), text, MAX_SIZE) != 0) {
        return notices;
    }
    std::istringstream stream(text);
    for (std::string line, path, error;
         std::getline(stream, line) && std::getline(stream, path) && std::getline(stream, error);) {
        LogNotice notice;
        std::string state;
        std::istringstream words(line);
        const bool isRead = bool(words >> notice.number >> state >> notice.frames);
        const auto* const known = std::find(STATES.begin(), STATES.end(), state);
        const auto plainPath = unescapeText(path);
        const auto plainError = unescapeText(error);
        if (!isRead || known == STATES.end() || !plainPath || !plainError) {
            return notices;
        }
        notice.state = static_cast<LogNotice::State>(known - STATES.begin());
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
        if (name.compare(0, NAME_BEGIN.size(), NAME_BEGIN) == 0) {
            const char* const end = name.data() + name.size();
            const auto result = std::from_chars(name.data() + NAME_BEGIN.size(), end, process);
            if (result.ec == std::errc() && result.ptr == end && process > 0) {
                processes.push_back(process);
            }
        }
    }
    std::sort(processes.begin(), processes.end());
    return processes;
}

}  // namespace platform
