#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <optional>
#include <ostream>

namespace control {

/// Shows a running program's figures on the whole terminal, until 'q' or the program's end. Keys turn the
/// overlay's switches.
ExitCode showTerminalView(std::optional<pid_t> process, std::ostream& err);

}  // namespace control
