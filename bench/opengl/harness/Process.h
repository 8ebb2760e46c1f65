#pragma once

#include <map>
#include <string>
#include <vector>

namespace bench {

using Command = std::vector<std::string>;
using Environment = std::map<std::string, std::string>;

/// This process's environment with the given variables set; an empty value removes one.
Environment environmentWith(const Environment& changes);

/// Runs a program to its end with nothing but the given environment; its output and errors go to a file.
/// The exit status; 128 and the signal when one ended it; 127 when it could not be started.
int run(const Command& command, const Environment& environment, const std::string& logPath);

}  // namespace bench
