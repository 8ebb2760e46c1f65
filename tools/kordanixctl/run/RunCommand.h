#pragma once

#include "ExitCode.h"

#include <ostream>
#include <string>
#include <vector>

namespace control {

/// Starts the program that the words name, searched for as shells do, with the overlay in it and a runtime
/// directory of its own, and waits for its end. Its properties are those of 'kordanixctl reset' but for
/// "debug.kordanix.status" and the `assignments`, texts of the form NAME=VALUE. Unless these name a process,
/// the first one that presents a frame shows the overlay. Nothing is written before the program has ended;
/// then, on `err`, why the overlay was not shown, if it was not. Returns what the program returned, or ends
/// as it did by a signal; when it cannot be run, NOT_FOUND and NOT_EXECUTABLE as shells do, after saying why.
ExitCode runProgram(const std::vector<std::string>& assignments, const std::vector<std::string>& words,
                    std::ostream& err);

}  // namespace control
