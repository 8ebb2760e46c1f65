#pragma once

#include "ExitCode.h"

#include <ostream>
#include <string>

/// Verbs that convert a frame dump to a file. They replace an existing file, but only by a complete one. The
/// folder is a dump's, or a file with a log, or contains dumps: then the verb converts the newest and says on
/// `out` which one that is. When parts of a damaged dump cannot be converted, the verb says so on `err` and
/// still writes the file.
namespace control {

ExitCode makeTrace(const std::string& folder, const std::string& path, std::ostream& out, std::ostream& err);
ExitCode makeReport(const std::string& folder, const std::string& path, std::ostream& out, std::ostream& err);

}  // namespace control
