#pragma once

#include "ExitCode.h"

#include <ostream>
#include <string>
#include <vector>

namespace control {

/// Finds the program like a shell, starts it with the overlay and with a runtime directory of its own, and
/// waits for its end. Its properties are those of 'kordanixctl reset', except "debug.kordanix.status" and the
/// `assignments`, texts of the form NAME=VALUE. Unless these name a process, the first one that presents a
/// frame shows the overlay. Prints nothing until the program has ended; then, if no overlay was shown, it
/// says why on `err`. Returns what the program returned, or ends by the same signal. When it cannot run the
/// program, it says why and returns NOT_FOUND or NOT_EXECUTABLE like a shell.
ExitCode runProgram(const std::vector<std::string>& assignments, const std::vector<std::string>& words,
                    std::ostream& err);

}  // namespace control
