#include "scene/Canvas.h"

#include "drawers/Drawer.h"
#include "drawers/MeshDrawer.h"
#include "gui/LayoutDef.h"

#include <algorithm>

namespace scene {

Canvas::Canvas(const glm::uvec2& surface, float scale)
    : isPortrait(surface.y > surface.x),
      units((isPortrait ? glm::vec2(gui::SCREEN_HEIGHT, gui::SCREEN_WIDTH)
                        : glm::vec2(gui::SCREEN_WIDTH, gui::SCREEN_HEIGHT)) /
            scale),
      pixels(surface) {}

float Canvas::pixelsPerUnit() const {
    return std::min(pixels.x / units.x, pixels.y / units.y);
}

void inset(drawer::Drawer& drawer, const glm::vec2& units, const Canvas& canvas) {
    drawer.mPosition += units / canvas.units;
    drawer.mSize -= 2.0F * units / canvas.units;
}

void drawMesh(const drawer::Drawer& owner, drawer::MeshDrawer& mesh) {
    mesh.mSize = owner.mSize;
    mesh.mPosition = owner.mPosition;
    mesh.draw();
}

}  // namespace scene
