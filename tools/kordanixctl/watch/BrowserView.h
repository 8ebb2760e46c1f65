#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <optional>
#include <ostream>

namespace control {

/// Becomes the program kordanix-serve, which shows a page for the process (see serve/ServeCommand.h), with
/// this one's runtime directory. A program of its own, so that no other verb loads what a server needs.
/// Returns only when there is none; `err` says so. Call it in a process with one thread.
ExitCode showBrowserView(std::optional<pid_t> process, int port, std::ostream& err);

}  // namespace control
