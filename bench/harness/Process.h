#pragma once

#include <map>
#include <string>
#include <vector>

namespace bench {

using Command = std::vector<std::string>;
using Environment = std::map<std::string, std::string>;

/// Returns this process's environment with these changes; an empty value removes a variable.
Environment environmentWith(const Environment& changes);

/// Runs a program to its end with exactly this environment; its output and errors go to a file. Returns the
/// exit status, 128 plus the signal that ended it, or 127 when it could not be started.
int run(const Command& command, const Environment& environment, const std::string& logPath);

}  // namespace bench
