#pragma once

#include "drawers/MeshDrawer.h"
#include "scene/PrimitiveFactory.h"

#include <glm/vec2.hpp>

#include <vector>

namespace software {

class Surface;

/// Graph fills, graph curves and grid lines. What rises above or falls below the mesh's rectangle is cut
/// off there. Fewer vertices than the topology needs draw nothing.
class MeshPrimitive : public drawer::MeshDrawer {
public:
    MeshPrimitive(Surface& surface, scene::Topology topology);
    void draw() override;
    void clear() override;

private:
    Surface& mSurface;
    scene::Topology mTopology;
    std::vector<glm::vec2> mPoints;  ///< the vertices in surface pixels, kept for its memory
};

}  // namespace software
