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
#include "drawlist/FillTessellator.h"
#include "drawlist/RetainedRange.h"
#include "drawlist/StrokeTessellator.h"
#include "scene/PrimitiveFactory.h"

namespace drawlist {

struct DrawList;

/// The primitives: each turns what it is asked to draw into triangles of its list's batch.

class RectPrimitive : public drawer::RectDrawer {
public:
    explicit RectPrimitive(DrawList& list) : mList(list) {}
    void draw() override;

private:
    DrawList& mList;
};

/// Graph fills, graph curves and grid lines, cut off at the mesh's rectangle. Curves are drawn half a line
/// width inside it, so that one along an edge shows in its full width.
class MeshPrimitive : public drawer::MeshDrawer {
public:
    MeshPrimitive(DrawList& list, scene::Topology topology) : mList(list), mTopology(topology) {}
    void draw() override;
    void clear() override { mVertices.clear(); }

private:
    void drawVertices();
    void drawLines(const raster::Box& frame, float width, const Paint& paint, const raster::PixelRect& clip);

    DrawList& mList;
    scene::Topology mTopology;
    StrokeTessellator mCurve;
    FillTessellator mFill;
    RetainedRange mRetained;
    std::vector<gui::Vertex> mLastVertices;
    std::vector<glm::vec2> mPoints;   ///< the vertices in surface pixels, kept for its memory
    std::vector<raster::Box> mLevel;  ///< the horizontal lines
    std::vector<raster::Box> mUpright;
};

class GridPrimitive : public drawer::GridDrawer {
public:
    GridPrimitive(const DrawList& list, std::unique_ptr<drawer::MeshDrawer> lines);
    float getAspectRatio() override;

private:
    const DrawList& mList;
};

/// A line of text. Its transform maps local coordinates to surface pixels, y downwards.
class TextPrimitive : public drawer::TextDrawer {
public:
    explicit TextPrimitive(DrawList& list) : mList(list) {}
    void draw() override;
    void drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                   char symbol) override;
    glm::mat4 getTransform(const glm::vec2& size, const glm::vec2& position,
                           const glm::vec3& translation) override;
    float getAspectRatio() override;
    float getScreenHeight() override;

private:
    DrawList& mList;
    RetainedRange mRetained;
    std::string mLastText;
    std::uint32_t mLastSizeHint = 0;
    gui::TextEllipsize mLastEllipsize = gui::TextEllipsize::NONE;
    gui::TextGravity mLastGravity = gui::TextGravity::LEFT;
    glm::vec4 mPaintColor{0.0F};  ///< of mPaint, which the glyphs of a line have in common
    Paint mPaint{glm::vec4(0.0F)};
};

/// The application's picture in its rectangle.
class ThumbnailPrimitive : public drawer::Drawer {
public:
    explicit ThumbnailPrimitive(DrawList& list) : mList(list) {}
    void draw() override;

private:
    DrawList& mList;
};

}  // namespace drawlist
