#pragma once

#include "dumps/logs/Comparison.h"

#include <ostream>

namespace dumps {

/// Writes a comparison as one HTML page that needs nothing else: the figures of both logs with their changes,
/// their frame times over time, and how they are distributed, on the same scales.
void writeComparison(const Comparison& comparison, std::ostream& out);

}  // namespace dumps
