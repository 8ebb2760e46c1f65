#include "drawlist/Batch.h"

#include "drawlist/GlyphCache.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <glm/common.hpp>
#include <utility>

namespace drawlist {

namespace {

/// A vertex buffer of this size holds the default widgets.
constexpr std::size_t USUAL_VERTICES = 8192;

bool isFinite(const Corner& corner) {
    return raster::isFinite(corner.point);
}

/// One axis of a box, cut where its coverage changes: a pixel that is covered in part, whole ones, and
/// another one in part. At most three pieces.
struct Pieces {
    struct Piece {
        int first;
        int end;
        float coverage;
    };

    Pieces(float low, float high, int limitLow, int limitHigh) {
        const int start = raster::floorToInt(low, limitLow, limitHigh);
        const int end = raster::ceilToInt(high, limitLow, limitHigh);
        const int wholeStart = std::min(raster::ceilToInt(low, start, end), end);
        const int wholeEnd = std::max(raster::floorToInt(high, start, end), wholeStart);
        add(start, wholeStart, low, high);
        add(wholeStart, wholeEnd, low, high);
        add(wholeEnd, end, low, high);
    }

    void add(int first, int end, float low, float high) {
        if (first < end) {
            pieces[count++] = {first, end, raster::overlap(low, high, first)};
        }
    }

    const Piece* begin() const { return pieces; }
    const Piece* end() const { return pieces + count; }

    Piece pieces[3] = {};
    int count = 0;
};

/// Keeps the part of a convex polygon on one side of a line: where `side` is not negative.
template <class Side>
std::size_t cutPolygon(Batch::Polygon& corners, std::size_t count, Side side) {
    if (count == 0) {  // another edge has left nothing: it passes by a corner of the clip
        return 0;
    }
    Batch::Polygon kept;
    std::size_t keptCount = 0;
    const Corner* from = &corners[count - 1];
    float fromSide = side(from->point);
    for (std::size_t i = 0; i < count; ++i) {
        const Corner& to = corners[i];
        const float toSide = side(to.point);
        if ((fromSide < 0.0F) != (toSide < 0.0F) && keptCount < kept.size()) {
            const float share = fromSide / (fromSide - toSide);
            kept[keptCount++] = {from->point + share * (to.point - from->point),
                                 from->coverage + share * (to.coverage - from->coverage)};
        }
        if (toSide >= 0.0F && keptCount < kept.size()) {
            kept[keptCount++] = to;
        }
        from = &to;
        fromSide = toSide;
    }
    std::copy_n(kept.begin(), keptCount, corners.begin());
    return keptCount;
}

}  // namespace

Vertex toVertex(const Corner& corner, const Paint& paint) {
    if (paint.profile() != 0) {
        return {corner.point.x, corner.point.y, GlyphCache::acrossProfile(corner.coverage), paint.profile(),
                paint.covering(1.0F)};
    }
    constexpr auto SOLID = static_cast<std::uint16_t>(GlyphCache::SOLID);
    return {corner.point.x, corner.point.y, SOLID, SOLID, paint.covering(corner.coverage)};
}

void Batch::begin(const raster::PixelRect& surface) {
    mSurface = surface;
    mClip = surface;
    for (Stream& each : mStreams) {
        std::swap(each.vertices, each.lastVertices);
        each.lastCount = std::exchange(each.count, 0);
    }
    mPart = Part::REST;
    mCovered.clear();
}

bool Batch::Stream::isRepeated() const {
    return count == lastCount &&
           (count == 0 || std::memcmp(vertices.data(), lastVertices.data(), count * sizeof(Vertex)) == 0);
}

void Batch::Stream::makeRoom() {
    vertices.resize(std::max(USUAL_VERTICES, 2 * count));
}

bool Batch::isRepeated() const {
    return std::all_of(mStreams.begin(), mStreams.end(),
                       [](const Stream& each) { return each.isRepeated(); });
}

std::size_t Batch::vertexCount() const {
    std::size_t count = 0;
    for (const Stream& each : mStreams) {
        count += each.count;
    }
    return count;
}

void Batch::copyVertices(Vertex* to) const {
    for (const Stream& each : mStreams) {
        to = std::copy_n(each.vertices.data(), each.count, to);
    }
}

bool Batch::isCovered(const raster::PixelRect& bounds) const {
    return std::any_of(mCovered.begin(), mCovered.end(), [&bounds](const raster::PixelRect& covered) {
        return !raster::intersect(covered, bounds).isEmpty();
    });
}

void Batch::beginSolid(const raster::PixelRect& bounds) {
    mPart = isCovered(bounds) ? Part::REST : Part::SOLID;
    mShapeStart = vertexCount(mPart);
}

void Batch::beginShape() {
    mPart = Part::REST;
    mShapeStart = vertexCount(mPart);
}

Batch::Shape Batch::endShape(const raster::PixelRect& bounds) {
    const Shape shape{mPart, {mShapeStart, vertexCount(mPart) - mShapeStart}, bounds};
    if (mPart == Part::REST && shape.vertices.count != 0) {
        mCovered.push_back(bounds);
    }
    mPart = Part::REST;
    return shape;
}

Batch::Shape Batch::repeat(const Shape& last, bool isSolid) {
    if (isSolid) {
        beginSolid(last.bounds);
    } else {
        beginShape();
    }
    const Range& vertices = last.vertices;
    std::copy_n(stream(last.part).lastVertices.data() + vertices.first, vertices.count, grow(vertices.count));
    return endShape(last.bounds);
}

void Batch::addPixels(const raster::PixelRect& pixels, const Texels& texels,
                      const std::array<std::uint8_t, 4>& color) {
    const auto left = static_cast<float>(pixels.left);
    const auto top = static_cast<float>(pixels.top);
    const auto right = static_cast<float>(pixels.right);
    const auto bottom = static_cast<float>(pixels.bottom);
    const Vertex topLeft{left, top, texels[0], texels[1], color};
    const Vertex topRight{right, top, texels[2], texels[1], color};
    const Vertex bottomLeft{left, bottom, texels[0], texels[3], color};
    const Vertex bottomRight{right, bottom, texels[2], texels[3], color};
    Vertex* const corners = grow(6);
    corners[0] = topLeft;
    corners[1] = topRight;
    corners[2] = bottomLeft;
    corners[3] = bottomLeft;
    corners[4] = topRight;
    corners[5] = bottomRight;
}

template <class TexelsOf>
void Batch::addPieces(const raster::Box& box, const Paint& paint, const raster::PixelRect& clip,
                      TexelsOf texelsOf) {
    const raster::PixelRect touched = raster::touchedPixels(box, clip);
    if (touched.isEmpty()) {
        return;
    }
    const Pieces columns(box.left, box.right, touched.left, touched.right);
    const Pieces rows(box.top, box.bottom, touched.top, touched.bottom);
    for (const Pieces::Piece& row : rows) {
        for (const Pieces::Piece& column : columns) {
            const std::array<std::uint8_t, 4> color = paint.covering(row.coverage * column.coverage);
            if (color[3] != 0) {
                const raster::PixelRect pixels{column.first, row.first, column.end, row.end};
                addPixels(pixels, texelsOf(pixels), color);
            }
        }
    }
}

void Batch::addRect(const raster::Box& box, const Paint& paint, const raster::PixelRect& clip) {
    if (paint.isVisible()) {
        constexpr auto SOLID = static_cast<std::uint16_t>(GlyphCache::SOLID);
        addPieces(box, paint, clip, [](const raster::PixelRect&) {
            return Texels{SOLID, SOLID, SOLID, SOLID};
        });
    }
}

void Batch::addPixels(const raster::PixelRect& pixels, const Paint& paint) {
    if (!pixels.isEmpty() && paint.isVisible()) {
        constexpr auto SOLID = static_cast<std::uint16_t>(GlyphCache::SOLID);
        addPixels(pixels, {SOLID, SOLID, SOLID, SOLID}, paint.covering(1.0F));
    }
}

void Batch::addTexels(const raster::PixelRect& pixels, int u, int v, const Paint& paint) {
    const raster::PixelRect seen = raster::intersect(pixels, mClip);
    if (seen.isEmpty() || !paint.isVisible()) {
        return;
    }
    const auto texel = [](int value) { return static_cast<std::uint16_t>(value); };
    addPixels(seen,
              {texel(u + seen.left - pixels.left), texel(v + seen.top - pixels.top),
               texel(u + seen.right - pixels.left), texel(v + seen.bottom - pixels.top)},
              paint.covering(1.0F));
}

void Batch::addCorners(const Corner& a, const Corner& b, const Corner& c, const Paint& paint) {
    Vertex* const corners = grow(3);
    corners[0] = toVertex(a, paint);
    corners[1] = toVertex(b, paint);
    corners[2] = toVertex(c, paint);
}

void Batch::addQuad(const Corner& a, const Corner& b, const Corner& c, const Corner& d, const Paint& paint,
                    const Clip& clip) {
    if (!clip.contains(a.point) || !clip.contains(b.point) || !clip.contains(c.point) ||
        !clip.contains(d.point)) {
        addCut({a, b, c, d}, 4, paint, clip);
        return;
    }
    Vertex* const corners = grow(6);
    corners[0] = corners[3] = toVertex(a, paint);
    corners[1] = toVertex(b, paint);
    corners[2] = corners[4] = toVertex(c, paint);
    corners[5] = toVertex(d, paint);
}

void Batch::addTriangle(const Corner& a, const Corner& b, const Corner& c, const Paint& paint,
                        const Clip& clip) {
    if (clip.contains(a.point) && clip.contains(b.point) && clip.contains(c.point)) {
        addCorners(a, b, c, paint);
        return;
    }
    addCut({a, b, c}, 3, paint, clip);
}

/// What of a convex polygon lies in the clip.
void Batch::addCut(Polygon corners, std::size_t count, const Paint& paint, const Clip& clip) {
    if (!std::all_of(corners.begin(), corners.begin() + count, isFinite) || !(clip.left < clip.right) ||
        !(clip.top < clip.bottom)) {
        return;
    }
    glm::vec2 low = corners[0].point;
    glm::vec2 high = corners[0].point;
    for (std::size_t i = 1; i < count; ++i) {
        low = glm::min(low, corners[i].point);
        high = glm::max(high, corners[i].point);
    }
    if (high.x <= clip.left || low.x >= clip.right || high.y <= clip.top || low.y >= clip.bottom) {
        return;
    }
    if (low.x < clip.left) {
        count = cutPolygon(corners, count, [&clip](const glm::vec2& point) { return point.x - clip.left; });
    }
    if (high.x > clip.right) {
        count = cutPolygon(corners, count, [&clip](const glm::vec2& point) { return clip.right - point.x; });
    }
    if (low.y < clip.top) {
        count = cutPolygon(corners, count, [&clip](const glm::vec2& point) { return point.y - clip.top; });
    }
    if (high.y > clip.bottom) {
        count = cutPolygon(corners, count, [&clip](const glm::vec2& point) { return clip.bottom - point.y; });
    }
    for (std::size_t i = 2; i < count; ++i) {
        if (isFinite(corners[0]) && isFinite(corners[i - 1]) && isFinite(corners[i])) {
            addCorners(corners[0], corners[i - 1], corners[i], paint);
        }
    }
}

void Batch::addPicture(const raster::Box& box) {
    const float width = box.right - box.left;
    const float height = box.bottom - box.top;
    if (hasPicture() || !(width > 0.0F) || !(height > 0.0F) || !std::isfinite(width) ||
        !std::isfinite(height)) {
        return;
    }
    mPart = Part::PICTURE;
    mPictureBox = box;
    mPicturePixels = raster::touchedPixels(box, mClip);
    const auto texel = [](int pixel, int first) { return static_cast<std::uint16_t>(pixel - first); };
    addPieces(box, Paint(glm::vec4(1.0F)), mClip, [&](const raster::PixelRect& pixels) {
        return Texels{texel(pixels.left, mPicturePixels.left), texel(pixels.top, mPicturePixels.top),
                      texel(pixels.right, mPicturePixels.left), texel(pixels.bottom, mPicturePixels.top)};
    });
    mPart = Part::REST;
    mCovered.push_back(mPicturePixels);
}

}  // namespace drawlist
