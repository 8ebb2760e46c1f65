#include "software/StrokeMask.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace software {

void StrokeMask::begin(const raster::PixelRect& region) {
    mRegion = region;
    const std::size_t count = region.isEmpty() ? 0
                                               : static_cast<std::size_t>(region.width()) *
                                                     static_cast<std::size_t>(region.height());
    mCoverage.assign(count, 0.0F);
}

float* StrokeMask::row(int y) {
    return mCoverage.data() +
           static_cast<std::size_t>(y - mRegion.top) * static_cast<std::size_t>(mRegion.width());
}

void StrokeMask::addStroke(const glm::vec2& from, const glm::vec2& to, float width) {
    if (mCoverage.empty() || !raster::isFinite(from) || !raster::isFinite(to)) {
        return;
    }
    // Coverage falls from 1 to 0 over one pixel around the stroke's border, so `reach` is as far as the
    // stroke goes.
    const double reach = 0.5 * width + 0.5;
    const double full = std::min(1.0, double{width});
    const double dx = double{to.x} - from.x;
    const double dy = double{to.y} - from.y;
    const double lengthSquared = dx * dx + dy * dy;
    const double inverse = lengthSquared > 0.0 ? 1.0 / lengthSquared : 0.0;
    const double low = std::min(from.y, to.y);
    const double high = std::max(from.y, to.y);
    const int firstRow = raster::floorToInt(low - reach, mRegion.top, mRegion.bottom);
    const int endRow = raster::ceilToInt(high + reach, mRegion.top, mRegion.bottom);
    for (int y = firstRow; y < endRow; ++y) {
        const double centerY = y + 0.5 - from.y;
        // Only the part of the stroke within reach of this row can touch its pixels.
        double start = 0.0;
        double end = 1.0;
        if (dy != 0.0) {
            start = std::clamp((centerY - reach) / dy, 0.0, 1.0);
            end = std::clamp((centerY + reach) / dy, 0.0, 1.0);
        }
        const double x0 = from.x + start * dx;
        const double x1 = from.x + end * dx;
        const int first = raster::floorToInt(std::min(x0, x1) - reach, mRegion.left, mRegion.right);
        const int last = raster::ceilToInt(std::max(x0, x1) + reach, mRegion.left, mRegion.right);
        float* coverage = row(y);
        for (int x = first; x < last; ++x) {
            const double centerX = x + 0.5 - from.x;
            const double along = std::clamp((centerX * dx + centerY * dy) * inverse, 0.0, 1.0);
            const double offX = centerX - along * dx;
            const double offY = centerY - along * dy;
            const double distanceSquared = offX * offX + offY * offY;
            if (distanceSquared < reach * reach) {
                const double covered = std::min(reach - std::sqrt(distanceSquared), full);
                float& pixel = coverage[x - mRegion.left];
                pixel = std::max(pixel, static_cast<float>(covered));
            }
        }
    }
}

void StrokeMask::addBox(const raster::Box& box) {
    const raster::PixelRect pixels = raster::touchedPixels(box, mRegion);
    for (int y = pixels.top; y < pixels.bottom; ++y) {
        const float inRow = raster::overlap(box.top, box.bottom, y);
        float* coverage = row(y);
        for (int x = pixels.left; x < pixels.right; ++x) {
            float& pixel = coverage[x - mRegion.left];
            pixel = std::max(pixel, inRow * raster::overlap(box.left, box.right, x));
        }
    }
}

}  // namespace software
