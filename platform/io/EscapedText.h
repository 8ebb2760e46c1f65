#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Puts any text on one line of a file that people read: a backslash becomes "\\", a line end "\n", and other
/// control bytes and blanks at either end become "\xHH". Everything else stays as it is.
namespace platform {

std::string escapeText(std::string_view text);

/// Returns the text that escapeText() was given; nothing if it cannot have written this line. Keeps blanks at
/// the ends that were not escaped.
std::optional<std::string> unescapeText(std::string_view line);

}  // namespace platform
