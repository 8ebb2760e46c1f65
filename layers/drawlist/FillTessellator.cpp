#include "drawlist/FillTessellator.h"

#include <algorithm>
#include <cmath>

#include "drawlist/Polyline.h"

namespace drawlist {

namespace {

/// The first and the last row; no surface reaches beyond them.
constexpr int LIMIT = 1 << 20;

/// How many pixels two points of a horizontal or vertical line may differ.
constexpr float TOLERANCE = 0.01F;

int floorOf(float value) {
    return raster::toInt(std::floor(value), -LIMIT, LIMIT);
}
int ceilOf(float value) {
    return raster::toInt(std::ceil(value), -LIMIT, LIMIT);
}

bool isUnderGraph(const glm::vec2* points, std::size_t count) {
    if (count < 4 || count % 2 != 0) {
        return false;
    }
    for (std::size_t i = 0; i < count; i += 2) {
        const bool isPair = raster::isFinite(points[i]) && raster::isFinite(points[i + 1]) &&
                            std::fabs(points[i].x - points[i + 1].x) < TOLERANCE &&
                            std::fabs(points[i + 1].y - points[1].y) < TOLERANCE;
        if (!isPair || (i > 0 && points[i].x < points[i - 2].x)) {
            return false;
        }
    }
    return true;
}

/// The first column whose centre is not left of x.
int columnAt(float x) {
    return ceilOf(x - 0.5F);
}

/// A slice with an upper edge up to this long, in pixels, is not cut into rows.
constexpr float SHORT_BORDER = 1.0F;

/// Adds the part between two points of the upper edge if the edge is neither steep nor near an edge of
/// `clip`.
bool addGentleSlice(Batch& batch, const glm::vec2& from, const glm::vec2& to, float bottom,
                    const Paint& paint, const raster::PixelRect& clip) {
    const float slope = (to.y - from.y) / (to.x - from.x);
    const float soft = 0.5F * std::sqrt(1.0F + slope * slope);
    const Clip area(clip);
    const int wholeBottom = floorOf(bottom);
    const glm::vec2 shift(0.0F, soft);
    const glm::vec2 lowest(0.0F, static_cast<float>(wholeBottom));
    if (!(soft <= SHORT_BORDER) || std::max(from.y, to.y) + soft > lowest.y || !area.contains(from - shift) ||
        !area.contains(to - shift) || wholeBottom > clip.mBottom) {
        return false;
    }
    const Corner above{from - shift, 0.0F};
    const Corner nextAbove{to - shift, 0.0F};
    const Corner below{from + shift, 1.0F};
    const Corner nextBelow{to + shift, 1.0F};
    const Corner foot{{from.x, lowest.y}, 1.0F};
    const Corner nextFoot{{to.x, lowest.y}, 1.0F};
    batch.addQuad(above, nextAbove, nextBelow, below, paint, area);
    batch.addQuad(below, nextBelow, nextFoot, foot, paint, area);
    batch.addRect(
        {static_cast<float>(columnAt(from.x)), lowest.y, static_cast<float>(columnAt(to.x)), bottom}, paint,
        clip);
    return true;
}

/// Adds the part between two points of the upper edge, in the columns of `clip`.
void addSlice(Batch& batch, const glm::vec2& from, const glm::vec2& to, float bottom, const Paint& paint,
              const raster::PixelRect& clip) {
    const float fromY = std::min(from.y, bottom);
    const float toY = std::min(to.y, bottom);
    const float high = std::min(fromY, toY);
    const float low = std::max(fromY, toY);
    const int wholeBottom = floorOf(bottom);

    // Rows above the edge are empty and rows below it full. In between, the coverage rises over the height in
    // which a line of this slope crosses a pixel.
    raster::PixelRect rows = clip;
    rows.mTop = std::max(rows.mTop, floorOf(high));
    rows.mBottom = std::min({rows.mBottom, ceilOf(low), wholeBottom});
    const float slope = (toY - fromY) / (to.x - from.x);
    const float soft = 0.5F * std::sqrt(1.0F + slope * slope);
    if (!rows.isEmpty() && std::isfinite(soft)) {
        const Clip band(rows);
        const auto corner = [](float x, float y, float coverage) { return Corner{{x, y}, coverage}; };
        const float deepest = static_cast<float>(ceilOf(low)) + soft;
        batch.addQuad(corner(from.x, fromY - soft, 0.0F), corner(to.x, toY - soft, 0.0F),
                      corner(to.x, toY + soft, 1.0F), corner(from.x, fromY + soft, 1.0F), paint, band);
        if (high + soft < static_cast<float>(rows.mBottom) - 0.5F) {
            batch.addQuad(corner(from.x, fromY + soft, 1.0F), corner(to.x, toY + soft, 1.0F),
                          corner(to.x, deepest, 1.0F), corner(from.x, deepest, 1.0F), paint, band);
        }
    }
    const float below = ceilOf(low) <= wholeBottom
                            ? static_cast<float>(ceilOf(low))
                            : std::max(0.5F * (fromY + toY), static_cast<float>(wholeBottom));
    batch.addRect({static_cast<float>(columnAt(from.x)), below, static_cast<float>(columnAt(to.x)), bottom},
                  paint, clip);
}

}  // namespace

void FillTessellator::draw(Batch& batch, const glm::vec2* points, std::size_t count, const Paint& paint,
                           const raster::PixelRect& clip) {
    if (clip.isEmpty() || !paint.isVisible()) {
        return;
    }
    if (!isUnderGraph(points, count)) {
        const Clip area(clip);
        for (std::size_t i = 2; i < count; ++i) {
            batch.addTriangle({points[i - 2], 1.0F}, {points[i - 1], 1.0F}, {points[i], 1.0F}, paint, area);
        }
        return;
    }
    mAll.clear();
    for (std::size_t i = 0; i < count; i += 2) {
        mAll.push_back(points[i]);
    }
    mEdge.clear();
    appendSimplified(mAll.data(), mAll.data() + mAll.size(), mEdge);

    // The first and the last column are partly covered. There the graph continues to the columns' borders.
    const float left = mEdge.front().x;
    const float right = mEdge.back().x;
    const float bottom = points[1].y;
    const int firstWhole = ceilOf(left);
    const int endWhole = std::max(floorOf(right), firstWhole);
    mEdge.front().x = std::floor(left);
    mEdge.back().x = std::ceil(right);
    const auto drawPart = [&](int first, int end) {
        raster::PixelRect columns = clip;
        columns.mLeft = std::max(columns.mLeft, first);
        columns.mRight = std::min(columns.mRight, end);
        if (!columns.isEmpty()) {
            drawColumns(batch, bottom, paint.fainter(raster::overlap(left, right, first)), columns);
        }
    };
    drawPart(floorOf(left), firstWhole);
    drawPart(firstWhole, endWhole);
    drawPart(endWhole, ceilOf(right));
}

void FillTessellator::drawColumns(Batch& batch, float bottom, const Paint& paint,
                                  const raster::PixelRect& clip) const {
    for (std::size_t i = 1; i < mEdge.size(); ++i) {
        const glm::vec2& from = mEdge[i - 1];
        const glm::vec2& to = mEdge[i];
        if (to.x > from.x && to.x > static_cast<float>(clip.mLeft) &&
            from.x < static_cast<float>(clip.mRight)) {
            if (!addGentleSlice(batch, from, to, bottom, paint, clip)) {
                addSlice(batch, from, to, bottom, paint, clip);
            }
        }
    }
}

}  // namespace drawlist
