#pragma once

#include "ExitCode.h"

#include <string>

namespace control {

/// The file of the program that execvp() would start.
struct ProgramFile {
    std::string path;
    ExitCode result = NOT_FOUND;  ///< SUCCESS, NOT_FOUND or NOT_EXECUTABLE
};

ProgramFile findProgram(const std::string& name);

/// What is known about a program before it starts.
struct ProgramKind {
    std::string obstacle;       ///< why no overlay can get in: "/bin/x is a 32-bit program"; or empty
    bool isHarmedByUs = false;  ///< its loader would complain of our library, or end it
};

/// Looks at the file of a program that findProgram() found; of a script, at that of its interpreter. Knows
/// nothing against a file that it cannot read.
ProgramKind inspectProgram(const std::string& path);

}  // namespace control
