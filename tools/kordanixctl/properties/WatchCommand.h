#pragma once

#include "ExitCode.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <ostream>

namespace control {

struct WatchOptions {
    std::uint64_t count = std::numeric_limits<std::uint64_t>::max();  ///< lines after which to end
    std::optional<double> seconds;                                    ///< time after which to end
};

/// Prints writes of properties whose names begin as the library's do, a line each, as they happen. Several
/// writes of one property in quick succession may show as one. Sleeps in between. Ends when `out` fails.
ExitCode watchProperties(const WatchOptions& options, std::ostream& out);

}  // namespace control
