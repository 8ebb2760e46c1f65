#pragma once

#include "core/SysPropWatcher.h"
#include "gui/LayoutDef.h"

#include <glm/vec2.hpp>
#include <string>
#include <vector>

namespace scene {

/// Returns the property that scales all widgets; the first call creates it. Rendering thread.
const SysProp<std::string>& scaleSetting();

/// Returns the scale of both sides: the property's if parseScale() reads it, else 1, or what LINE_PIXELS need
/// on this surface. Rendering thread.
glm::vec2 widgetScale(const glm::uvec2& surface);

/// A widget whose size is another than the layout's.
struct WidgetShape {
    gui::WidgetType type = gui::WidgetType::FPS;
    float width = 0.0F;   ///< at least this fraction of the canvas; 0: as it is
    float pixel = 0.0F;   ///< and a row of such widgets has its borders on whole pixels of this width
    bool isLine = false;  ///< its strip is all of it

    bool operator==(const WidgetShape& other) const {
        return type == other.type && width == other.width && pixel == other.pixel && isLine == other.isLine;
    }
};

/// Gives the layout manager its render areas in this scale and with these shapes; call it before the widgets
/// are laid out. A widget that would not fit between the margins of the surface grows as far as they let it.
/// Rendering thread.
void arrangeAreas(const glm::vec2& scale, const std::vector<WidgetShape>& shapes);

}  // namespace scene
