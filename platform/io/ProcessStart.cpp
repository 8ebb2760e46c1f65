#include "io/ProcessStart.h"

#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <string>
#include <string_view>

#include "io/PlainFile.h"

namespace platform {

std::optional<std::uint64_t> processStart(pid_t process) {
    constexpr std::size_t LIMIT = 4096;
    std::string text;
    if (readPlainFile("/proc/" + std::to_string(process) + "/stat", text, LIMIT) != 0) {
        return std::nullopt;
    }
    // Behind the name in parentheses, which may itself hold blanks and parentheses: the state is the third
    // field, the start the twenty-second.
    std::string_view fields(text);
    const std::size_t nameEnd = fields.rfind(") ");
    if (nameEnd == std::string_view::npos) {
        return std::nullopt;
    }
    fields.remove_prefix(nameEnd + 2);
    const bool hasEnded = fields.front() == 'Z' || fields.front() == 'X';
    for (int field = 3; field < 22; ++field) {
        const std::size_t blank = fields.find(' ');
        if (blank == std::string_view::npos) {
            return std::nullopt;
        }
        fields.remove_prefix(blank + 1);
    }
    std::uint64_t start = 0;
    const auto result = std::from_chars(fields.data(), fields.data() + fields.size(), start);
    return result.ec == std::errc() && !hasEnded ? std::optional(start) : std::nullopt;
}

bool hasSurelyEnded(pid_t process, std::uint64_t start) {
    const std::optional<std::uint64_t> current = processStart(process);
    if (current) {
        return *current != start;
    }
    if (!processStart(getpid())) {
        return false;
    }
    // Known to the kernel and not shown: it has just ended, or belongs to somebody else.
    return kill(process, 0) != 0 && errno == ESRCH;
}

}  // namespace platform
