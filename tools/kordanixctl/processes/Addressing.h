#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <optional>
#include <ostream>
#include <vector>

/// Whose properties and overlays a verb is about.
namespace control {

/// Makes the runtime directory of the process that is meant the one of this process: that of `process`;
/// without one, what KORDANIX_RUNTIME_DIR says; without that, the directory of the only program that was
/// started with 'run', else the user's. Fails, and says so on `err`, when there is no such process or several
/// could be meant.
ExitCode chooseRuntimeDirectory(std::optional<pid_t> process, std::ostream& err);

/// The processes that listen in the runtime directory; of these, with `process`, that one alone. A program
/// that was started with 'run' may have left the drawing to another process: the only one that listens then
/// stands for it. Otherwise a process that does not listen is in the answer all the same.
std::vector<pid_t> recipients(const std::string& directory, std::optional<pid_t> process);

}  // namespace control
