#include "drawlist/FillTessellator.h"

#include "drawlist/Polyline.h"

#include <algorithm>
#include <cmath>

namespace drawlist {

namespace {

/// The first and the last row; no surface reaches beyond them.
constexpr int LIMIT = 1 << 20;

/// How many pixels two points of a horizontal or vertical line may differ.
constexpr float TOLERANCE = 0.01F;

int floorOf(float value) {
    return raster::floorToInt(value, -LIMIT, LIMIT);
}
int ceilOf(float value) {
    return raster::ceilToInt(value, -LIMIT, LIMIT);
}

bool isUnderGraph(const glm::vec2* points, std::size_t count) {
    if (count < 4 || count % 2 != 0) {
        return false;
    }
    const float bottom = points[1].y;
    float last = points[0].x;
    for (std::size_t i = 0; i < count; i += 2) {
        const glm::vec2& upper = points[i];
        const glm::vec2& lower = points[i + 1];
        // What is not finite is not near anything.
        if (!(std::fabs(upper.x - lower.x) < TOLERANCE) || !(std::fabs(lower.y - bottom) < TOLERANCE) ||
            !(upper.x >= last) || !std::isfinite(upper.y)) {
            return false;
        }
        last = upper.x;
    }
    return true;
}

/// The first column whose centre is not left of x.
int columnAt(float x) {
    return ceilOf(x - 0.5F);
}

/// A slice with an upper edge up to this long, in pixels, is not cut into rows.
constexpr float SHORT_BORDER = 1.0F;

/// What the slices of an area have in common.
struct Columns {
    Columns(Batch& to, float bottomEdge, const Paint& color, const raster::PixelRect& pixels)
        : batch(to),
          paint(color),
          clip(pixels),
          edges(pixels),
          bottom(bottomEdge),
          wholeBottom(std::floor(bottomEdge)),
          clear(toVertex({{}, 0.0F}, color)),
          full(toVertex({{}, 1.0F}, color)) {}

    Batch& batch;
    const Paint& paint;
    const raster::PixelRect& clip;
    Clip edges;
    float bottom;
    float wholeBottom;
    Vertex clear;  ///< where the area does not cover
    Vertex full;
};

/// How far the coverage rises above and below an edge of this slope: together over the height in which such a
/// line crosses a pixel.
float softnessOf(float slope) {
    return 0.5F * std::sqrt(1.0F + slope * slope);
}

/// Adds the part between two points of the upper edge, down to the last whole row, if the edge is neither
/// steep nor near an edge of the clip.
bool addGentleSlice(const Columns& area, const glm::vec2& from, const glm::vec2& to, float soft) {
    const float floor = area.wholeBottom;
    if (!(soft <= SHORT_BORDER) || std::max(from.y, to.y) + soft > floor ||
        std::min(from.y, to.y) - soft < area.edges.top) {
        return false;
    }
    Vertex* const vertices = area.batch.grow(12);
    vertices[0] = vertices[3] = moved(area.clear, {from.x, from.y - soft});
    vertices[1] = moved(area.clear, {to.x, to.y - soft});
    vertices[2] = vertices[4] = vertices[7] = moved(area.full, {to.x, to.y + soft});
    vertices[5] = vertices[6] = vertices[9] = moved(area.full, {from.x, from.y + soft});
    vertices[8] = vertices[10] = moved(area.full, {to.x, floor});
    vertices[11] = moved(area.full, {from.x, floor});
    return true;
}

/// The same for a steep edge. So that a peak is not drawn higher than it is, the rows above the edge are
/// empty, and so that a valley is not filled, the rows below it are full.
bool addSteepSlice(const Columns& area, const glm::vec2& from, const glm::vec2& to, float soft) {
    const glm::vec2& upper = from.y < to.y ? from : to;
    const glm::vec2& lower = from.y < to.y ? to : from;
    const float top = std::floor(upper.y);
    const float end = std::ceil(lower.y);
    if (!(soft > SHORT_BORDER) || !(upper.y + soft < end) || !(lower.y - soft > top) ||
        top < area.edges.top || end > area.wholeBottom) {
        return false;
    }
    const float perRow = (lower.x - upper.x) / (lower.y - upper.y);
    const auto coverage = [soft](float depth) { return 0.5F + 0.5F * depth / soft; };
    const Vertex first = toVertex({{upper.x, top}, coverage(top - upper.y)}, area.paint);
    const Vertex last = toVertex({{lower.x, end}, coverage(end - lower.y)}, area.paint);
    const Vertex foot = moved(area.full, {upper.x + (end - soft - upper.y) * perRow, end});
    Vertex* const vertices = area.batch.grow(15);
    vertices[0] = vertices[3] = vertices[6] = vertices[9] = first;
    vertices[1] = moved(area.clear, {upper.x + (top + soft - upper.y) * perRow, top});
    vertices[2] = vertices[4] = moved(area.clear, {lower.x, lower.y - soft});
    vertices[5] = vertices[7] = last;
    vertices[8] = vertices[10] = vertices[13] = foot;
    vertices[11] = vertices[12] = moved(area.full, {upper.x, upper.y + soft});
    vertices[14] = moved(area.full, {upper.x, end});
    area.batch.addPixels({columnAt(from.x), floorOf(end), columnAt(to.x), floorOf(area.wholeBottom)},
                         area.paint);
    return true;
}

/// Adds the part between two points of any upper edge, down to the bottom.
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
    rows.top = std::max(rows.top, floorOf(high));
    rows.bottom = std::min({rows.bottom, ceilOf(low), wholeBottom});
    const float slope = (toY - fromY) / (to.x - from.x);
    const float soft = softnessOf(slope);
    if (!rows.isEmpty() && std::isfinite(soft)) {
        const Clip band(rows);
        const auto corner = [](float x, float y, float coverage) { return Corner{{x, y}, coverage}; };
        const float deepest = static_cast<float>(ceilOf(low)) + soft;
        batch.addQuad(corner(from.x, fromY - soft, 0.0F), corner(to.x, toY - soft, 0.0F),
                      corner(to.x, toY + soft, 1.0F), corner(from.x, fromY + soft, 1.0F), paint, band);
        if (high + soft < static_cast<float>(rows.bottom) - 0.5F) {
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
    mEdge.clear();
    appendSimplified(points, count / 2, 2, mEdge);

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
        columns.left = std::max(columns.left, first);
        columns.right = std::min(columns.right, end);
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
    const Columns area(batch, bottom, paint, clip);
    const bool isWhole = area.wholeBottom <= area.edges.bottom;
    // The row that the bottom covers in part is one rectangle for all slices beside each other that leave it.
    float rowStart = area.edges.left;
    float rowEnd = area.edges.left;
    const auto addRow = [&] { batch.addRect({rowStart, area.wholeBottom, rowEnd, bottom}, paint, clip); };
    const auto firstColumn = [](float x) { return static_cast<float>(columnAt(x)); };
    for (std::size_t i = 1; i < mEdge.size(); ++i) {
        glm::vec2 from = mEdge[i - 1];
        glm::vec2 to = mEdge[i];
        if (!(to.x > from.x) || to.x <= area.edges.left || from.x >= area.edges.right) {
            continue;
        }
        const float slope = (to.y - from.y) / (to.x - from.x);
        const float soft = softnessOf(slope);
        if (to.x > area.edges.right) {
            to = {area.edges.right, from.y + slope * (area.edges.right - from.x)};
        }
        if (from.x < area.edges.left) {
            from = {area.edges.left, to.y - slope * (to.x - area.edges.left)};
        }
        if (isWhole && (addGentleSlice(area, from, to, soft) || addSteepSlice(area, from, to, soft))) {
            rowEnd = firstColumn(to.x);
        } else {
            addRow();
            addSlice(batch, from, to, bottom, paint, clip);
            rowStart = rowEnd = firstColumn(to.x);
        }
    }
    addRow();
}

}  // namespace drawlist
