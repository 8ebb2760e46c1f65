#pragma once

namespace entry {

/// Why a frame goes without the overlay, as the end of a sentence ("its context was destroyed"); null for
/// nothing. The texts of the layers stay as long as the process.
using Obstacle = const char*;

}  // namespace entry
