#pragma once

#include "ExitCode.h"

#include <ostream>
#include <string>

/// Verbs that turn the folder of a frame dump into one file, which they replace. What was left out of a
/// damaged dump is said on `err`; the file is written all the same.
namespace control {

ExitCode makeTrace(const std::string& folder, const std::string& path, std::ostream& err);
ExitCode makeReport(const std::string& folder, const std::string& path, std::ostream& err);

}  // namespace control
