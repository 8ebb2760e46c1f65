#pragma once

#include "ExitCode.h"
#include "cli/Invocation.h"

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace control {

/// Makes the parser with every verb. The chosen verb writes to `invocation`, and reads `program`, the words
/// that the parser does not see: both outlive it.
std::unique_ptr<CLI::App> makeCommandLine(Invocation& invocation, const std::vector<std::string>& program);

/// Executes the words after the program's name, and prints the results on the standard streams.
ExitCode runCommandLine(std::vector<std::string> words);

}  // namespace control
