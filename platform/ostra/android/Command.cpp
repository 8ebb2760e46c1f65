#include "ostra/android/Command.h"

#include <algorithm>
#include <array>

namespace platform {

namespace {

/// In the order of Command::Kind.
constexpr std::array<std::string_view, 3> WORDS = {"dump", "capture", "picture"};
constexpr std::size_t MAX_DIGITS = 20;  // the number becomes part of a file's name

}  // namespace

std::optional<Command> parseCommand(std::string_view text) {
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    if (digits == 0 || digits > MAX_DIGITS || digits == text.size() || text[digits] != ' ') {
        return std::nullopt;
    }
    const auto* const word = std::find(WORDS.begin(), WORDS.end(), text.substr(digits + 1));
    if (word == WORDS.end()) {
        return std::nullopt;
    }
    return Command{std::string(text.substr(0, digits)), static_cast<Command::Kind>(word - WORDS.begin())};
}

}  // namespace platform
