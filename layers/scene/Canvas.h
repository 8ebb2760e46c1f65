#pragma once

#include <glm/vec2.hpp>

namespace drawer {
class Drawer;
class MeshDrawer;
}  // namespace drawer

namespace scene {

/// The virtual canvas on a surface. The library takes text heights in pixels and everything else in fractions
/// of the canvas; the scene uses canvas units.
struct Canvas {
    /// Widgets of twice the scale have units of twice the size.
    explicit Canvas(const glm::uvec2& surface, const glm::vec2& scale = glm::vec2(1.0F));

    /// Pixels of a unit at a scale of 1.
    static glm::vec2 unitOf(const glm::uvec2& surface);

    /// Whether the surface, and so the canvas, is higher than wide.
    bool isPortrait;

    /// Width and height of the canvas in units: fewer at a larger scale.
    glm::vec2 units;

    /// The surface in pixels.
    glm::vec2 pixels;

    /// The smaller side of a unit in pixels, so that texts with a height in units fit their cells on a
    /// surface of any shape.
    float pixelsPerUnit() const;
};

/// Shrinks the drawer's rectangle by `units` on each side.
void inset(drawer::Drawer& drawer, const glm::vec2& units, const Canvas& canvas);

/// Draws one of the drawer's meshes in its rectangle.
void drawMesh(const drawer::Drawer& owner, drawer::MeshDrawer& mesh);

}  // namespace scene
