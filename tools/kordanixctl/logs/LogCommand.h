#pragma once

#include "ExitCode.h"
#include "ostra/logs/LogRequest.h"

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

namespace control {

/// Asks the meant processes that show the overlay for a log of frame times, or to end theirs, and prints on
/// `out` what became of it within a few seconds: the file, and the figures of a log that has ended. Fails,
/// and says why on `err`, when a process gives no answer, cannot write its log, or has nothing to start or
/// stop.
ExitCode controlLog(const platform::LogRequest& request, std::optional<pid_t> process, std::ostream& out,
                    std::ostream& err);

/// Prints the figures of a log in a file. Returns an empty text, or why it has none.
std::string printLogFile(const std::string& path, std::ostream& out);

}  // namespace control
