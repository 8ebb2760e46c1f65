#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <optional>
#include <ostream>

namespace control {

/// Serves a page that shows a running program and changes its settings, at the address that it prints, until
/// the program ends or a signal asks this one to. Port 0 is any free one.
ExitCode servePage(std::optional<pid_t> process, int port, std::ostream& out, std::ostream& err);

}  // namespace control
