#pragma once

#include "drawlist/Batch.h"
#include "raster/Geometry.h"

#include <cstddef>
#include <glm/vec2.hpp>
#include <vector>

namespace drawlist {

/// Turns the area under a graph into triangles. The upper edge is soft. Where the area ends at a fraction of
/// a pixel, on the left, on the right or at the bottom, that pixel is partly covered. Reuses its memory.
class FillTessellator {
public:
    /// Takes a triangle strip of `count` points in surface pixels: for each place, from left to right, the
    /// point of the graph and the one below it on a level bottom edge. Fills any other strip with hard edges.
    /// Skips points that are not finite. Draws nothing outside `clip`, which must lie inside the batch's own
    /// clip.
    void draw(Batch& batch, const glm::vec2* points, std::size_t count, const Paint& paint,
              const raster::PixelRect& clip);

private:
    void drawColumns(Batch& batch, float bottom, const Paint& paint, const raster::PixelRect& clip) const;

    std::vector<glm::vec2> mEdge;  ///< the upper edge without points on a straight line
};

}  // namespace drawlist
