#include "io/ProcessStart.h"

#include "io/PlainFile.h"

#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <string>
#include <string_view>

namespace platform {

namespace {

struct ProcessState {
    std::uint64_t start = 0;
    bool hasEnded = false;  ///< it is a zombie: its parent has not collected it yet
};

/// Nothing for a process that /proc does not show.
std::optional<ProcessState> readState(pid_t process) {
    constexpr std::size_t LIMIT = 4096;
    constexpr int FIRST_FIELD = 3;  // the first one after the name
    constexpr int THREADS_FIELD = 20;
    constexpr int START_FIELD = 22;
    std::string text;
    if (readPlainFile("/proc/" + std::to_string(process) + "/stat", text, LIMIT) != 0) {
        return std::nullopt;
    }
    // The name is in parentheses, and may itself contain blanks and parentheses.
    std::string_view fields(text);
    const std::size_t nameEnd = fields.rfind(") ");
    if (nameEnd == std::string_view::npos) {
        return std::nullopt;
    }
    fields.remove_prefix(nameEnd + 2);
    const bool isZombie = fields.front() == 'Z' || fields.front() == 'X';
    ProcessState state;
    for (int field = FIRST_FIELD; field < START_FIELD; ++field) {
        if (field == THREADS_FIELD) {
            // A process whose first thread has ended looks like a zombie while its other threads run.
            state.hasEnded = isZombie && (fields.substr(0, 2) == "0 " || fields.substr(0, 2) == "1 ");
        }
        const std::size_t blank = fields.find(' ');
        if (blank == std::string_view::npos) {
            return std::nullopt;
        }
        fields.remove_prefix(blank + 1);
    }
    const auto result = std::from_chars(fields.data(), fields.data() + fields.size(), state.start);
    return result.ec == std::errc() ? std::optional(state) : std::nullopt;
}

}  // namespace

std::optional<std::uint64_t> processStart(pid_t process) {
    const auto state = readState(process);
    return state && !state->hasEnded ? std::optional(state->start) : std::nullopt;
}

bool hasSurelyEnded(pid_t process, std::uint64_t start) {
    const auto state = readState(process);
    if (state) {
        return state->start != start || state->hasEnded;
    }
    if (!readState(getpid())) {
        return false;
    }
    // If the kernel still knows the process, it has only just ended, or /proc hides it because it is another
    // user's.
    return kill(process, 0) != 0 && errno == ESRCH;
}

}  // namespace platform
