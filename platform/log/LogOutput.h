#pragma once

#include <string_view>

namespace platform {

/// Writes lines to the end of the file that KORDANIX_LOG_FILE names, else to standard error. Links in that
/// name are followed; what is no regular file is not written to. A line that the file does not take goes to
/// standard error, after one line that says why. Never waits for a reader: what standard error has no room
/// for is left out. Raises no signal and keeps nothing open. Any thread. Returns 0 or an error number; throws
/// std::bad_alloc.
int writeToLog(std::string_view lines);

}  // namespace platform
