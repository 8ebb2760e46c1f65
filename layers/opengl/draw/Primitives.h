#pragma once

#include <glm/vec2.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "opengl/draw/Curve.h"
#include "opengl/draw/GraphFill.h"
#include "opengl/draw/Kept.h"
#include "scene/PrimitiveFactory.h"

namespace opengl {

struct DrawTarget;

/// The primitives: each turns what it is asked to draw into triangles of its target's batch.

class GlRect : public drawer::RectDrawer {
public:
    explicit GlRect(DrawTarget& target) : mTarget(target) {}
    void draw() override;

private:
    DrawTarget& mTarget;
};

/// Graph fills, graph curves and grid lines, cut off at the mesh's rectangle. Curves are drawn half a line
/// width inside it, so that one along an edge shows in its full width.
class GlMesh : public drawer::MeshDrawer {
public:
    GlMesh(DrawTarget& target, scene::Topology topology) : mTarget(target), mTopology(topology) {}
    void draw() override;
    void clear() override { mVertices.clear(); }

private:
    void drawVertices();
    void drawLines(const raster::Box& frame, float width, const Ink& ink, const raster::PixelRect& clip);

    DrawTarget& mTarget;
    scene::Topology mTopology;
    Curve mCurve;
    GraphFill mFill;
    Kept mKept;
    std::vector<gui::Vertex> mKeptVertices;
    std::vector<glm::vec2> mPoints;   ///< the vertices in surface pixels, kept for its memory
    std::vector<raster::Box> mLevel;  ///< the horizontal lines
    std::vector<raster::Box> mUpright;
};

class GlGrid : public drawer::GridDrawer {
public:
    GlGrid(const DrawTarget& target, std::unique_ptr<drawer::MeshDrawer> lines);
    float getAspectRatio() override;

private:
    const DrawTarget& mTarget;
};

/// A line of text. Its transform maps local coordinates to surface pixels, y downwards.
class GlText : public drawer::TextDrawer {
public:
    explicit GlText(DrawTarget& target) : mTarget(target) {}
    void draw() override;
    void drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                   char symbol) override;
    glm::mat4 getTransform(const glm::vec2& size, const glm::vec2& position,
                           const glm::vec3& translation) override;
    float getAspectRatio() override;
    float getScreenHeight() override;

private:
    DrawTarget& mTarget;
    Kept mKept;
    std::string mKeptText;
    std::uint32_t mKeptSizeHint = 0;
    gui::TextEllipsize mKeptEllipsize = gui::TextEllipsize::NONE;
    gui::TextGravity mKeptGravity = gui::TextGravity::LEFT;
    glm::vec4 mInkColor{0.0F};  ///< of mInk, which the glyphs of a line have in common
    Ink mInk{glm::vec4(0.0F)};
};

/// The application's picture in its rectangle.
class GlThumbnail : public drawer::Drawer {
public:
    explicit GlThumbnail(DrawTarget& target) : mTarget(target) {}
    void draw() override;

private:
    DrawTarget& mTarget;
};

}  // namespace opengl
