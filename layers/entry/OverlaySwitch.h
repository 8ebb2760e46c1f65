#pragma once

#include "core/RenderingApiType.h"
#include "entry/Obstacle.h"

namespace entry {

/// Why the overlay of an API is off, by the properties, when the library says that it is.
Obstacle whyIsOff(core::RenderingApiType api);

}  // namespace entry
