#pragma once

#include "core/SysPropWatcher.h"

#include <glm/vec2.hpp>

#include <string>

namespace scene {

/// Returns the property that scales all widgets; the first call creates it. Rendering thread.
const SysProp<std::string>& scaleSetting();

/// Gives the layout manager its render areas in the size that the user wants, or as large as a line of text
/// needs on this surface; call it before the widgets are laid out. A widget that would not fit between the
/// margins of the surface grows as far as they let it. Returns the scale of both sides: the property's if
/// parseScale() reads it, else 1, or what LINE_PIXELS need. Rendering thread.
glm::vec2 scaleAreas(const glm::uvec2& surface);

}  // namespace scene
