#pragma once

#include <string>

namespace control {

/// Lets the user edit a file with the command in VISUAL or EDITOR, else with the first of Debian's "editor",
/// nano and vi that there is, and waits for its end. Returns what went wrong, or an empty text.
std::string runEditor(const std::string& path);

}  // namespace control
