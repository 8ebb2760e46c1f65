#pragma once

#include "ExitCode.h"

#include <string>
#include <vector>

namespace control {

/// Does what the words after the program's name ask for, and says on the standard streams what comes of it.
ExitCode runCommandLine(std::vector<std::string> words);

}  // namespace control
