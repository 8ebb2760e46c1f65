#pragma once

#include "entry/Obstacle.h"

namespace opengl {

using entry::Obstacle;

inline constexpr Obstacle SINGLE_BUFFERED = "its surface is a pixmap or has a single buffer";

}  // namespace opengl
