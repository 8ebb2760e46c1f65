#include "scene/Style.h"

#include "drawers/TextDrawer.h"
#include "gui/LayoutDef.h"
#include "gui/WidgetsSettings.h"

#include <algorithm>
#include <cmath>

namespace scene {

glm::vec4 gridColor() {
    return gui::gColor[8];
}

glm::vec4 plainTextColor() {
    return gui::gColor[9];
}

glm::vec4 renderPassColor() {
    return gui::gColor[3];
}

glm::vec4 backgroundColor() {
    return gui::WidgetsSettings::getWidgets().bgColor();
}

glm::vec4 noColor() {
    return gui::gColor[11];
}

void setTextHeight(drawer::TextDrawer& text, float canvasUnits, float pixelsPerUnit) {
    // 0 would mean no limit at all.
    text.setTextSizeHint(static_cast<unsigned int>(std::max(std::lround(canvasUnits * pixelsPerUnit), 1L)));
}

}  // namespace scene
