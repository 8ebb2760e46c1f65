#pragma once

#include "ExitCode.h"
#include "properties/WatchCommand.h"

#include <sys/types.h>

#include <optional>
#include <ostream>

namespace control {

/// Prints a JSON object a line each time the program has brought its figures up to date: see toJson(), with
/// the time in seconds since 1970 and the process. Ends with the program, and when writing to `out` fails.
ExitCode printFigureLines(std::optional<pid_t> process, const WatchOptions& options, std::ostream& out,
                          std::ostream& err);

}  // namespace control
