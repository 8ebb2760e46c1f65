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

/// How the vertices of a mesh are joined.
enum class Topology {
    TRIANGLE_STRIP,  ///< graph fills
    LINE_STRIP,      ///< graph curves
    LINES            ///< grids: each two vertices make one segment
};

/// Everything that a layer of one graphics API supplies to show the overlay: the primitives that the
/// library's drawers are built from, and the surface they are drawn on. The factory outlives what it
/// made. Rendering thread only.
class PrimitiveFactory {
public:
    virtual ~PrimitiveFactory() = default;

    virtual std::unique_ptr<drawer::MeshDrawer> createMesh(Topology topology) = 0;
    virtual std::unique_ptr<drawer::RectDrawer> createRect() = 0;
    virtual std::unique_ptr<drawer::GridDrawer> createGrid(std::unique_ptr<drawer::MeshDrawer> lines) = 0;
    virtual std::unique_ptr<drawer::TextDrawer> createText() = 0;

    /// A small live view of what the application drew, filling its rectangle.
    virtual std::unique_ptr<drawer::Drawer> createThumbnail() = 0;

    /// Width and height of the surface in pixels.
    virtual glm::uvec2 getSurfaceSize() const = 0;

    /// The widgets are about to be drawn, exactly as they were the last time if `isSame`. Returns whether
    /// they are to be: a layer that can show its last drawing again answers false.
    virtual bool beginDrawing(bool /*isSame*/) { return true; }

    /// Until clearClip(), nothing is drawn outside this rectangle (canvas fractions, origin top-left).
    virtual void setClip(const glm::vec2& position, const glm::vec2& size) = 0;
    virtual void clearClip() = 0;
};

}  // namespace scene
