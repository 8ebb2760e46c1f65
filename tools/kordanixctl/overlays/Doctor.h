#pragma once

#include "ExitCode.h"

#include <ostream>

namespace control {

/// Says in plain words how this machine and user stand with the overlay: where the runtime directory is,
/// which properties are set, which processes show the overlay, what can be measured and what to do about the
/// rest. Fails only when the runtime directory or its properties cannot be used.
ExitCode runDoctor(std::ostream& out, std::ostream& err);

}  // namespace control
