#pragma once

#include "dumps/Dump.h"

#include <ostream>

namespace dumps {

/// Writes a dump in the Chrome trace event format (an object with "traceEvents"), which trace viewers open.
/// One process holds a counter track for every value that has figures, a track with a slice for every frame,
/// and one with a slice for every render pass. Times are microseconds since the first frame.
///
/// A dump has the length of a render pass but not its start. The passes of a frame are therefore laid end to
/// end from the frame on which they were recorded, inside a slice that is the frame they belong to.
void writeTrace(const Dump& dump, std::ostream& out);

}  // namespace dumps
