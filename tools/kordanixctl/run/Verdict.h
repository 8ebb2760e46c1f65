#pragma once

#include <string>

namespace control {

/// Says why no process of an ended run has shown the overlay. Uses the notes in the run's folder, or else
/// `obstacle`, what inspectProgram() said before the program started. Empty when a process has shown it.
std::string notShownReason(const std::string& folder, const std::string& obstacle);

}  // namespace control
