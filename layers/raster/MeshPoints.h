#pragma once

#include "drawers/MeshDrawer.h"
#include "raster/Geometry.h"

#include <glm/vec2.hpp>

#include <vector>

namespace raster {

/// Where the vertices of a mesh fall in pixels, when its local coordinates span the frame less `inset` pixels
/// on each side. Replaces `points`, whose memory is kept.
void placeVertices(const std::vector<gui::Vertex>& vertices, const Box& frame, float inset,
                   std::vector<glm::vec2>& points);

}  // namespace raster
