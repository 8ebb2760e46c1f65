#pragma once

#include "drawers/MeshDrawer.h"
#include "scene/PrimitiveFactory.h"

#include <glm/vec2.hpp>
#include <vector>

namespace software {

class Surface;

/// Graph fills, graph curves and grid lines, cut at the mesh's rectangle. Draws nothing when there are fewer
/// vertices than the topology needs.
class MeshPrimitive : public drawer::MeshDrawer {
public:
    MeshPrimitive(Surface& surface, scene::Topology topology);
    void draw() override;
    void clear() override;

private:
    Surface& mSurface;
    scene::Topology mTopology;
    std::vector<glm::vec2> mPoints;  ///< the vertices in surface pixels; a member to reuse its memory
};

}  // namespace software
