#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Any text on one line, for files that people read: backslashes become "\\", line ends "\n", other control
/// bytes and blanks at the ends "\xHH". All else stays as it is.
namespace platform {

std::string escapeText(std::string_view text);

/// What escapeText() was given. Nothing for what is no such line. Blanks at the ends that were not escaped
/// stay.
std::optional<std::string> unescapeText(std::string_view line);

}  // namespace platform
