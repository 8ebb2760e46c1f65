#include "raster/GridLine.h"

#include <algorithm>
#include <cmath>

namespace raster {

namespace {

/// A segment is horizontal or vertical when it leaves its row or column by less than this many pixels.
constexpr float STRAIGHT = 0.125F;

/// Where a line of whole pixels around `center` begins. The added quarter of a pixel keeps the usual
/// positions, whole and half pixels, away from where the rounding changes.
float startOf(float center, float width, float low, float high) {
    const float start = std::floor(center - 0.5F * width + 0.75F);
    return std::max(std::min(start, std::floor(high) - width), std::ceil(low));
}

}  // namespace

bool alignLine(const glm::vec2& from, const glm::vec2& to, float width, const Box& frame, Box& box) {
    const float wholeWidth = std::max(1.0F, std::round(width));
    if (std::fabs(from.x - to.x) < STRAIGHT) {
        const float left = startOf(0.5F * (from.x + to.x), wholeWidth, frame.left, frame.right);
        box = {left, std::min(from.y, to.y), left + wholeWidth, std::max(from.y, to.y)};
        return true;
    }
    if (std::fabs(from.y - to.y) < STRAIGHT) {
        const float top = startOf(0.5F * (from.y + to.y), wholeWidth, frame.top, frame.bottom);
        box = {std::min(from.x, to.x), top, std::max(from.x, to.x), top + wholeWidth};
        return true;
    }
    return false;
}

}  // namespace raster
