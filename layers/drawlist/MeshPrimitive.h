#pragma once

#include "drawers/MeshDrawer.h"
#include "drawlist/FillTessellator.h"
#include "drawlist/RetainedRange.h"
#include "drawlist/StrokeTessellator.h"
#include "raster/MeshPlacement.h"
#include "scene/PrimitiveFactory.h"

#include <glm/vec2.hpp>
#include <vector>

namespace drawlist {

/// Graph fills, graph curves and grid lines, cut at the mesh's rectangle.
class MeshPrimitive : public drawer::MeshDrawer {
public:
    MeshPrimitive(DrawList& list, scene::Topology topology) : mList(list), mTopology(topology) {}
    void draw() override;
    void clear() override { mVertices.clear(); }

private:
    void drawVertices();
    void sortLines(const raster::MeshPlacement& place);
    void drawLines(const raster::MeshPlacement& place, const Paint& paint);

    DrawList& mList;
    scene::Topology mTopology;
    StrokeTessellator mCurve;
    FillTessellator mFill;
    RetainedRange mRetained;
    std::vector<gui::Vertex> mLastVertices;
    std::vector<glm::vec2> mPoints;   ///< the vertices in surface pixels; a member to reuse its memory
    std::vector<raster::Box> mLevel;  ///< the horizontal lines
    std::vector<raster::Box> mUpright;
    std::vector<std::size_t> mSlanted;  ///< the first points of other lines
};

}  // namespace drawlist
