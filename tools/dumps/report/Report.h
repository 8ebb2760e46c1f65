#pragma once

#include "dumps/Dump.h"

#include <ostream>
#include <string>

namespace dumps {

/// Writes a dump as one HTML page that needs nothing else: frame times with their percentiles, low rates,
/// stability and histogram, the other values, and the render passes of the slowest frames. Returns an empty
/// text, or why nothing was written: the dump must have two frames in a row.
std::string writeReport(const Dump& dump, std::ostream& out);

}  // namespace dumps
