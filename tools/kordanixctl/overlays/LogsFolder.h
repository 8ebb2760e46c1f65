#pragma once

#include <sys/types.h>

#include <string>

namespace control {

/// Returns the folder for what has no other place, and creates it when it is missing: the one that 'run
/// --log' was given, else $XDG_DATA_HOME/kordanix/logs, by default ~/.local/share/kordanix/logs. On failure
/// an empty text with the reason in `error`.
std::string logsFolder(std::string& error);

/// Returns the path of a file that is not there yet, of the process's name, the local time and `ending`, in
/// that folder; or an empty text, as above.
std::string newLogsFile(pid_t process, const std::string& ending, std::string& error);

}  // namespace control
