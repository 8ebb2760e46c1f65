#pragma once

namespace opengl {

/// Why a frame goes without the overlay, as the end of a sentence ("its context was destroyed"); null for
/// nothing. The texts of this layer stay as long as the process.
using Obstacle = const char*;

inline constexpr Obstacle SINGLE_BUFFERED = "its surface is a pixmap or has a single buffer";

}  // namespace opengl
