#pragma once

#include <string_view>

namespace platform {

/// Appends lines to the file that KORDANIX_LOG_FILE names, or else writes them to standard error. Follows
/// links in that path, and writes only to a regular file. If the file cannot take a line, standard error gets
/// it, after one line that says why. Never waits for a reader: drops what standard error has no room for.
/// Raises no signal and keeps nothing open. Any thread. Returns 0 or an error number; throws std::bad_alloc.
int writeToLog(std::string_view lines);

}  // namespace platform
