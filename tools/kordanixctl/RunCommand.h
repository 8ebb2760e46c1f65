#pragma once

#include "ExitCode.h"

#include <ostream>
#include <string>
#include <vector>

namespace control {

/// Makes this process the program that the words name, searched for as shells do, with the overlay in it and
/// a runtime directory of its own, and so does not return. Its properties are those of 'kordanixctl reset'
/// but for "debug.kordanix.status", "debug.kordanix.proc" and "debug.kordanix.api", and for the
/// `assignments`, texts of the form NAME=VALUE. Returns, after saying on `err` what is wrong, when the
/// program cannot be run: NOT_FOUND and NOT_EXECUTABLE as shells do.
ExitCode runProgram(const std::vector<std::string>& assignments, const std::vector<std::string>& words,
                    std::ostream& err);

/// What the kernel will put first into the command line of the program in the file `path` when it is started
/// as `name`: of a script, that is its interpreter.
std::string commandName(const std::string& path, const std::string& name);

}  // namespace control
