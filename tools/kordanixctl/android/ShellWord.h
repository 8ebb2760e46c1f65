#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace control {

/// Quotes a text, if it has to be, so that every POSIX shell takes it for exactly one word.
std::string shellWord(std::string_view text);

/// Returns the command line of these words.
std::string shellLine(const std::vector<std::string>& words);

}  // namespace control
