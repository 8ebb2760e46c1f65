#pragma once

#include "ExitCode.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <ostream>

namespace control {

struct WatchOptions {
    std::uint64_t count = std::numeric_limits<std::uint64_t>::max();  ///< ends after this many lines
    std::optional<double> seconds;                                    ///< ends after this time
};

/// Prints each write of a property whose name begins like the library's, one a line, as it happens. Several
/// quick writes of one property may show as one. Sleeps in between. Ends when writing to `out` fails.
ExitCode watchProperties(const WatchOptions& options, std::ostream& out);

}  // namespace control
