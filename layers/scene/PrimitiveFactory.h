#pragma once

#include <glm/vec2.hpp>
#include <memory>

namespace drawer {
class Drawer;
class GridDrawer;
class MeshDrawer;
class RectDrawer;
class TextDrawer;
}  // namespace drawer

namespace scene {

/// How the vertices of a mesh connect.
enum class Topology {
    TRIANGLE_STRIP,  ///< graph fills
    LINE_STRIP,      ///< graph curves
    LINES,           ///< grids: each two vertices make one segment
    BARS  ///< rectangles: each two vertices are opposite corners, moved to the nearest whole pixels
};

/// Everything that a graphics API's layer supplies to show the overlay: the primitives for the library's
/// drawers, and the surface's size. The factory must outlive its primitives. Rendering thread only.
class PrimitiveFactory {
public:
    virtual ~PrimitiveFactory() = default;

    virtual std::unique_ptr<drawer::MeshDrawer> createMesh(Topology topology) = 0;
    virtual std::unique_ptr<drawer::RectDrawer> createRect() = 0;
    virtual std::unique_ptr<drawer::GridDrawer> createGrid(std::unique_ptr<drawer::MeshDrawer> lines) = 0;
    virtual std::unique_ptr<drawer::TextDrawer> createText() = 0;

    /// Creates a small live view of the application's picture, which fills its rectangle.
    virtual std::unique_ptr<drawer::Drawer> createThumbnail() = 0;

    /// Width and height of the surface in pixels.
    virtual glm::uvec2 getSurfaceSize() const = 0;

    /// Called before the widgets are drawn; `isSame` means exactly as the last time. Returns whether to draw
    /// them: a layer that can show its last drawing again returns false.
    virtual bool beginDrawing(bool /*isSame*/) { return true; }

    /// Until clearClip(), draws nothing outside this rectangle (canvas fractions, origin top-left).
    virtual void setClip(const glm::vec2& position, const glm::vec2& size) = 0;
    virtual void clearClip() = 0;
};

}  // namespace scene
