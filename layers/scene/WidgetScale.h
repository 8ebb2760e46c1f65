#pragma once

#include "core/SysPropWatcher.h"

#include <string>

namespace scene {

/// Returns the property that scales all widgets; the first call creates it. Rendering thread.
const SysProp<std::string>& scaleSetting();

/// Gives the layout manager its render areas in the size that the user wants; call it before the widgets are
/// laid out. A widget that would not fit between the margins of the surface grows as far as they let it.
/// Returns the scale, 1 unless the property has a text that parseScale() reads. Rendering thread.
float scaleAreas();

}  // namespace scene
