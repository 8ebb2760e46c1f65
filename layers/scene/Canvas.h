#pragma once

#include <glm/vec2.hpp>

namespace drawer {
class Drawer;
class MeshDrawer;
}  // namespace drawer

namespace scene {

/// How the virtual canvas lies on the surface. Text heights are given to the library in pixels and everything
/// else in fractions of the canvas; the scene thinks in canvas units.
struct Canvas {
    explicit Canvas(const glm::uvec2& surface);

    /// Upright surfaces have the upright canvas.
    bool isPortrait;

    /// Width and height of the canvas in units.
    glm::vec2 units;

    /// The surface in pixels.
    glm::vec2 pixels;

    /// The smaller side of a unit in pixels: texts of a height in units then fit their cells on a surface of
    /// any shape.
    float pixelsPerUnit() const;
};

/// Takes `units` off each side of the drawer's rectangle.
void inset(drawer::Drawer& drawer, const glm::vec2& units, const Canvas& canvas);

/// Draws a mesh of the drawer's in its rectangle.
void drawMesh(const drawer::Drawer& owner, drawer::MeshDrawer& mesh);

}  // namespace scene
