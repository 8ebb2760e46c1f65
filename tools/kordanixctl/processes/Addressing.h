#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <optional>
#include <ostream>
#include <vector>

/// Finds out whose properties and overlays a verb works on.
namespace control {

/// Makes the meant process's runtime directory that of this process. With `process`, that is the process's
/// own; else the one in KORDANIX_RUNTIME_DIR; else that of the only program started with 'run'; else the
/// user's. Fails, and says so on `err`, when there is no such process or several could be meant.
ExitCode chooseRuntimeDirectory(std::optional<pid_t> process, std::ostream& err);

/// Returns the processes that listen in the runtime directory; with `process`, only that one, listening or
/// not. There is one exception: a program started with 'run' may leave the drawing to another process. If
/// `process` does not listen and only one process of the run does, it returns that one.
std::vector<pid_t> recipients(const std::string& directory, std::optional<pid_t> process);

}  // namespace control
