#pragma once

#include <glm/vec2.hpp>

#include <cstddef>
#include <vector>

#include "drawlist/Batch.h"
#include "raster/Geometry.h"

namespace drawlist {

/// Turns the area under a graph into triangles. Its upper edge is soft; where it ends at a fraction of a
/// pixel, to the left, to the right or at the bottom, that pixel is covered in part. Keeps its memory from
/// use to use.
class FillTessellator {
public:
    /// A triangle strip of `count` points in surface pixels: for each place, from left to right, the point of
    /// the graph and the one below on a level bottom edge. Any other strip is filled with hard edges. What is
    /// not finite is left out. Nothing reaches out of `clip`, which lies inside the batch's own clip.
    void draw(Batch& batch, const glm::vec2* points, std::size_t count, const Paint& paint,
              const raster::PixelRect& clip);

private:
    void drawColumns(Batch& batch, float bottom, const Paint& paint, const raster::PixelRect& clip) const;

    std::vector<glm::vec2> mAll;   ///< upper edge
    std::vector<glm::vec2> mEdge;  ///< the same without what does not bend it
};

}  // namespace drawlist
