#pragma once

#include "raster/Geometry.h"
#include "raster/SurfaceShape.h"

#include <glm/vec2.hpp>
#include <vector>

namespace drawer {
class MeshDrawer;
}

namespace raster {

/// Where a mesh falls on a surface, in pixels.
struct MeshPlacement {
    Box frame;               ///< the mesh's rectangle
    PixelRect clip;          ///< the pixels of it that may be drawn on
    float lineWidth = 0.0F;  ///< of curves and grids
};

/// Places a mesh that is limited to the pixels of `clip`. Its vertices go to `points`, whose memory is kept.
/// Those of a curve lie half a line width and its outline inside the frame, so that a line along an edge (an
/// idle or a fully loaded metric) shows in its full width.
MeshPlacement placeMesh(const drawer::MeshDrawer& mesh, bool isCurve, const SurfaceShape& shape,
                        const PixelRect& clip, std::vector<glm::vec2>& points);

}  // namespace raster
