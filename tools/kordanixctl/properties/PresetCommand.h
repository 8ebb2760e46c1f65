#pragma once

#include "ExitCode.h"

#include <ostream>
#include <string>

namespace control {

/// Switches the programs that use this process's runtime directory to a preset, or with an empty name to the
/// one after theirs, and publishes that; fails where there are none. Prints its name on `out`; says on `err`
/// what went wrong.
ExitCode switchPreset(const std::string& name, std::ostream& out, std::ostream& err);

}  // namespace control
