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

/// What we can tell about a program before it starts.
struct ProgramKind {
    std::string obstacle;       ///< why we cannot show an overlay: "/bin/x is statically linked"; else empty
    bool isHarmedByUs = false;  ///< its loader would complain about our library, or end the program
};

/// Examines the file of a program that findProgram() found, or, for a script, its interpreter's file. Reports
/// no obstacle for a file that it cannot read.
ProgramKind inspectProgram(const std::string& path);

}  // namespace control
