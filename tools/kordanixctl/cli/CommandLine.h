#pragma once

#include "ExitCode.h"

#include <string>
#include <vector>

namespace control {

/// Executes the words after the program's name, and prints the results on the standard streams.
ExitCode runCommandLine(std::vector<std::string> words);

}  // namespace control
