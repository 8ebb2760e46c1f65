#pragma once

#include "raster/Geometry.h"

#include <glm/vec2.hpp>
#include <vector>

namespace software {

/// How much of each pixel a set of strokes covers, as their union: where strokes meet or cross, nothing
/// counts twice. Reuses its memory.
class StrokeMask {
public:
    /// Starts a new mask for these pixels.
    void begin(const raster::PixelRect& region);

    /// Adds a stroke with round ends (surface pixels). It is `width` pixels wide at every angle. Skips it
    /// when a coordinate is not finite.
    void addStroke(const glm::vec2& from, const glm::vec2& to, float width);

    /// Adds a rectangle by exact area.
    void addBox(const raster::Box& box);

    /// Coverage 0..1 of one row (surface pixels, within the region), region.width() values.
    float* row(int y);

private:
    raster::PixelRect mRegion;
    std::vector<float> mCoverage;
};

}  // namespace software
