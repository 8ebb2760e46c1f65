#include "raster/MeshPoints.h"

namespace raster {

void placeVertices(const std::vector<gui::Vertex>& vertices, const Box& frame, float inset,
                   std::vector<glm::vec2>& points) {
    const glm::vec2 center(0.5F * (frame.mLeft + frame.mRight), 0.5F * (frame.mTop + frame.mBottom));
    const glm::vec2 half(0.5F * (frame.mRight - frame.mLeft) - inset,
                         0.5F * (frame.mBottom - frame.mTop) - inset);
    points.clear();
    for (const gui::Vertex& vertex : vertices) {
        points.push_back(center + half * glm::vec2(vertex.x, vertex.y));
    }
}

}  // namespace raster
