#pragma once

#include "ExitCode.h"

#include <ostream>

namespace control {

/// Reports in plain words what matters to the overlay on this machine: where the runtime directory is, which
/// properties are set, which processes show the overlay, which figures can be measured, and how to get the
/// others. Fails only when the runtime directory or its properties cannot be used.
ExitCode runDoctor(std::ostream& out, std::ostream& err);

}  // namespace control
