#pragma once

#include "ExitCode.h"
#include "logs/RunLog.h"

#include <ostream>
#include <string>
#include <vector>

namespace control {

/// What the command line says beside the program.
struct RunOptions {
    std::vector<std::string> assignments;  ///< texts of the form NAME=VALUE
    std::string preset;                    ///< its name; empty for none
    LogOptions logs;
};

/// Finds the program like a shell, starts it with the overlay and with a runtime directory of its own, and
/// waits for its end. Its properties are those of 'kordanixctl reset', except "debug.kordanix.status", what
/// its profiles say, and the options over them; when a profile changes, they change. Unless the assignments
/// name a process, the first one that presents a frame shows the overlay. Until the program has ended it
/// prints nothing but wrong lines of a profile; then, if no overlay was shown, it says why on `err`, and what
/// its logs say. Returns what the program returned, or ends by the same signal. When it cannot run the
/// program, it says why and returns NOT_FOUND or NOT_EXECUTABLE like a shell.
ExitCode runProgram(const RunOptions& options, const std::vector<std::string>& words, std::ostream& err);

}  // namespace control
