#include "scene/Canvas.h"

#include "drawers/Drawer.h"
#include "drawers/MeshDrawer.h"
#include "gui/LayoutDef.h"

#include <algorithm>

namespace scene {

namespace {

bool isUpright(const glm::uvec2& surface) {
    return surface.y > surface.x;
}

glm::vec2 sizeInUnits(const glm::uvec2& surface) {
    return isUpright(surface) ? glm::vec2(gui::SCREEN_HEIGHT, gui::SCREEN_WIDTH)
                              : glm::vec2(gui::SCREEN_WIDTH, gui::SCREEN_HEIGHT);
}

}  // namespace

Canvas::Canvas(const glm::uvec2& surface, const glm::vec2& scale)
    : isPortrait(isUpright(surface)), units(sizeInUnits(surface) / scale), pixels(surface) {}

glm::vec2 Canvas::unitOf(const glm::uvec2& surface) {
    return glm::vec2(surface) / sizeInUnits(surface);
}

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
