#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <optional>
#include <ostream>
#include <string>

namespace control {

/// Has a process write its next frame with the overlay and saves it as a PNG file, which replaces what is
/// there. Without a process, the only one that listens is asked. Fails when none
/// comes within `seconds`.
ExitCode savePicture(std::optional<pid_t> process, const std::string& path, double seconds,
                     std::ostream& err);

}  // namespace control
