#include "raster/MeshPlacement.h"

#include "drawers/MeshDrawer.h"
#include "raster/Outline.h"

#include <algorithm>

namespace raster {

MeshPlacement placeMesh(const drawer::MeshDrawer& mesh, bool isCurve, const SurfaceShape& shape,
                        const PixelRect& clip, std::vector<glm::vec2>& points) {
    const Box frame = shape.toPixels(mesh.mPosition, mesh.mSize, mesh.mTranslation);
    const float width = shape.lineWidth();
    const float inset = isCurve ? 0.5F * width + OUTLINE_WIDTH : 0.0F;
    const glm::vec2 center(0.5F * (frame.left + frame.right), 0.5F * (frame.top + frame.bottom));
    const glm::vec2 half(0.5F * (frame.right - frame.left) - inset,
                         0.5F * (frame.bottom - frame.top) - inset);
    points.resize(mesh.mVertices.size());
    std::transform(
        mesh.mVertices.begin(), mesh.mVertices.end(), points.begin(),
        [center, half](const gui::Vertex& vertex) { return center + half * glm::vec2(vertex.x, vertex.y); });
    return {frame, touchedPixels(frame, clip), width};
}

}  // namespace raster
