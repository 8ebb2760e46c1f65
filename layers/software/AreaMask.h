#pragma once

#include "raster/Geometry.h"

#include <glm/vec2.hpp>
#include <vector>

namespace software {

/// How much of each pixel a set of triangles covers, by exact area. Triangles that share an edge join without
/// a seam; where triangles overlap, the sum is limited to 1. Reuses its memory.
class AreaMask {
public:
    /// Starts a new mask for these pixels.
    void begin(const raster::PixelRect& region);

    /// Adds a triangle in surface pixels, of either orientation, anywhere. Skips it when a coordinate is not
    /// finite.
    void addTriangle(const glm::vec2& a, const glm::vec2& b, const glm::vec2& c);

    /// Coverage 0..1 of one row (surface pixels, within the region): region.width() values, valid until the
    /// next call. Ask only once for each row.
    const float* resolveRow(int y);

private:
    void addEdge(double x0, double y0, double x1, double y1);
    void addPart(double x0, double y0, double x1, double y1, float direction);
    static void addSlice(float* cells, float x, float nextX, float area);

    raster::PixelRect mRegion;
    std::vector<float> mCells;  ///< rows of width + 2: changes of coverage from one pixel to the next
};

}  // namespace software
