#pragma once

#include "ExitCode.h"

#include <ostream>
#include <string>

/// Verbs that turn a frame dump into one file, which they replace, but never with less than all of it. The
/// folder is that of a dump, or holds some: then the newest of them is taken, and `out` says which. What was
/// left out of a damaged dump is said on `err`; the file is written all the same.
namespace control {

ExitCode makeTrace(const std::string& folder, const std::string& path, std::ostream& out, std::ostream& err);
ExitCode makeReport(const std::string& folder, const std::string& path, std::ostream& out, std::ostream& err);

}  // namespace control
