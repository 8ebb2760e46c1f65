#include "software/AreaMask.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace software {

void AreaMask::begin(const raster::PixelRect& region) {
    mRegion = region;
    const std::size_t count = region.isEmpty() ? 0
                                               : (static_cast<std::size_t>(region.width()) + 2) *
                                                     static_cast<std::size_t>(region.height());
    mCells.assign(count, 0.0F);
}

void AreaMask::addTriangle(const glm::vec2& a, const glm::vec2& b, const glm::vec2& c) {
    if (mCells.empty() || !raster::isFinite(a) || !raster::isFinite(b) || !raster::isFinite(c)) {
        return;
    }
    // Gives all triangles the same orientation, so that their areas add up and the two passes over a shared
    // edge cancel.
    const double turn = (double{b.x} - a.x) * (double{c.y} - a.y) - (double{b.y} - a.y) * (double{c.x} - a.x);
    const glm::vec2& second = turn < 0.0 ? c : b;
    const glm::vec2& third = turn < 0.0 ? b : c;
    addEdge(a.x, a.y, second.x, second.y);
    addEdge(second.x, second.y, third.x, third.y);
    addEdge(third.x, third.y, a.x, a.y);
}

// Cuts the edge to the region. A part left of the region counts as lying on the left border, because an edge
// affects everything to its right; a part right of the region counts as lying on the right border, where it
// has no effect.
void AreaMask::addEdge(double x0, double y0, double x1, double y1) {
    if (y0 == y1) {
        return;
    }
    float direction = -1.0F;
    if (y0 > y1) {
        std::swap(x0, x1);
        std::swap(y0, y1);
        direction = 1.0F;
    }
    const double slope = (x1 - x0) / (y1 - y0);
    const double left = mRegion.left;
    const double width = mRegion.width();
    const double top = std::max(y0, double(mRegion.top));
    const double bottom = std::min(y1, double(mRegion.bottom));
    if (!(top < bottom)) {
        return;
    }
    const auto xAt = [&](double y) { return x0 + (y - y0) * slope - left; };
    // Where the edge crosses the region's two sides, in the edge's direction.
    double crossings[2] = {top, top};
    if (slope != 0.0) {
        crossings[0] = std::clamp(y0 + (left - x0) / slope, top, bottom);
        crossings[1] = std::clamp(y0 + (left + width - x0) / slope, top, bottom);
        if (crossings[0] > crossings[1]) {
            std::swap(crossings[0], crossings[1]);
        }
    }
    const double stops[4] = {top, crossings[0], crossings[1], bottom};
    for (int i = 0; i < 3; ++i) {
        const double from = stops[i];
        const double to = stops[i + 1];
        if (from < to) {
            addPart(std::clamp(xAt(from), 0.0, width), from, std::clamp(xAt(to), 0.0, width), to, direction);
        }
    }
}

// x relative to the region and within 0..width, y in surface pixels, y0 < y1.
void AreaMask::addPart(double x0, double y0, double x1, double y1, float direction) {
    const double slope = (x1 - x0) / (y1 - y0);
    const auto stride = static_cast<std::size_t>(mRegion.width()) + 2;
    const int firstRow = raster::floorToInt(y0, mRegion.top, mRegion.bottom - 1);
    const double low = std::min(x0, x1);
    const double high = std::max(x0, x1);
    for (int row = firstRow; row < mRegion.bottom && row < y1; ++row) {
        const double from = std::max(y0, double(row));
        const double to = std::min(y1, row + 1.0);
        const double x = std::clamp(x0 + (from - y0) * slope, low, high);
        const double nextX = std::clamp(x0 + (to - y0) * slope, low, high);
        float* cells = mCells.data() + static_cast<std::size_t>(row - mRegion.top) * stride;
        addSlice(cells, static_cast<float>(std::min(x, nextX)), static_cast<float>(std::max(x, nextX)),
                 direction * static_cast<float>(to - from));
    }
}

// Distributes the part of an edge in one row over the cells that it crosses. Each cell gets the change of the
// covered area from its left neighbour, so that a running sum along the row gives the coverage.
void AreaMask::addSlice(float* cells, float x, float nextX, float area) {
    const float firstFloor = std::floor(x);
    const float lastCeil = std::ceil(nextX);
    const auto first = static_cast<std::ptrdiff_t>(firstFloor);
    const auto last = static_cast<std::ptrdiff_t>(lastCeil);
    if (last <= first + 1) {
        const float middle = 0.5F * (x + nextX) - firstFloor;
        cells[first] += area - area * middle;
        cells[first + 1] += area * middle;
        return;
    }
    const float perCell = 1.0F / (nextX - x);
    const float inFirst = firstFloor + 1.0F - x;
    const float inLast = nextX - (lastCeil - 1.0F);
    float covered = 0.5F * perCell * inFirst * inFirst;
    float previous = covered;
    cells[first] += area * covered;
    for (std::ptrdiff_t i = first + 1; i < last - 1; ++i) {
        covered = perCell * (inFirst + static_cast<float>(i - first) - 0.5F);
        cells[i] += area * (covered - previous);
        previous = covered;
    }
    covered = 1.0F - 0.5F * perCell * inLast * inLast;
    cells[last - 1] += area * (covered - previous);
    cells[last] += area * (1.0F - covered);
}

const float* AreaMask::resolveRow(int y) {
    const auto stride = static_cast<std::size_t>(mRegion.width()) + 2;
    float* cells = mCells.data() + static_cast<std::size_t>(y - mRegion.top) * stride;
    float sum = 0.0F;
    for (std::size_t i = 0; i + 2 < stride; ++i) {
        sum += cells[i];
        cells[i] = std::min(std::fabs(sum), 1.0F);
    }
    return cells;
}

}  // namespace software
