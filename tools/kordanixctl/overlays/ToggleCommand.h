#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <optional>
#include <ostream>

namespace control {

/// Switches overlays off, or on again. Fails when no process has one.
ExitCode toggleOverlay(std::optional<pid_t> process, std::ostream& out, std::ostream& err);

}  // namespace control
