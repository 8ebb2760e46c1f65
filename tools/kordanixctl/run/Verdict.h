#pragma once

#include <string>

namespace control {

/// Why no process of an ended run has shown the overlay, as far as that can be known: from what the processes
/// left in the run's folder, else from `obstacle`, what was known against the program before it started.
/// Empty when one of them has shown it.
std::string notShownReason(const std::string& folder, const std::string& obstacle);

}  // namespace control
