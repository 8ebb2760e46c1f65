#include "processes/ProcessInfo.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>
#include <system_error>

namespace control {

namespace {

std::ifstream openFile(pid_t process, const char* name) {
    return std::ifstream("/proc/" + std::to_string(process) + '/' + name, std::ios::binary);
}

}  // namespace

std::string processName(pid_t process) {
    std::ifstream file = openFile(process, "cmdline");
    // The library reads as much of its own command line.
    std::array<char, 256> text{};
    file.getline(text.data(), text.size());
    const std::string_view name(text.data());
    constexpr std::string_view BLANKS = " \t\n\v\f\r";
    const std::size_t first = std::min(name.find_first_not_of(BLANKS), name.size());
    return std::string(name.substr(first, name.find_last_not_of(BLANKS) + 1 - first));
}

std::optional<std::uint64_t> startTime(pid_t process) {
    std::string line;
    std::getline(openFile(process, "stat"), line, '\0');
    // The name is in parentheses, and may itself contain blanks and parentheses.
    std::istringstream fields(line.substr(std::min(line.rfind(')') + 1, line.size())));
    std::string state;
    std::string field;
    fields >> state;
    for (int i = 4; i < 22; ++i) {
        fields >> field;
    }
    std::uint64_t time = 0;
    const bool hasEnded = state == "Z" || state == "X";
    return fields >> time && !hasEnded ? std::optional(time) : std::nullopt;
}

std::optional<pid_t> parentProcess(pid_t process) {
    std::string line;
    std::getline(openFile(process, "stat"), line, '\0');
    std::istringstream fields(line.substr(std::min(line.rfind(')') + 1, line.size())));
    std::string state;
    pid_t parent = 0;
    return fields >> state >> parent ? std::optional(parent) : std::nullopt;
}

bool isStopped(pid_t process) {
    std::string line;
    std::getline(openFile(process, "stat"), line, '\0');
    const std::size_t state = line.rfind(") ") + 2;
    return state >= 2 && state < line.size() && (line[state] == 'T' || line[state] == 't');
}

std::optional<std::string> environmentVariable(pid_t process, const std::string& name) {
    std::ifstream file = openFile(process, "environ");
    if (!file) {
        return std::nullopt;
    }
    const std::string beginning = name + '=';
    for (std::string entry; std::getline(file, entry, '\0');) {
        if (entry.compare(0, beginning.size(), beginning) == 0) {
            return entry.substr(beginning.size());
        }
    }
    return file.bad() ? std::nullopt : std::optional(std::string());
}

std::vector<pid_t> allProcesses() {
    std::vector<pid_t> processes;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
        if (const auto process = toProcess(entry.path().filename())) {
            processes.push_back(*process);
        }
    }
    std::sort(processes.begin(), processes.end());
    return processes;
}

std::optional<pid_t> toProcess(const std::string& text) {
    pid_t process = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, process);
    return result.ec == std::errc() && result.ptr == end && process > 0 ? std::optional(process)
                                                                        : std::nullopt;
}

}  // namespace control
