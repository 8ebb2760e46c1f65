#include "drawlist/StrokeTessellator.h"

#include "drawlist/GlyphCache.h"
#include "drawlist/Polyline.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <glm/geometric.hpp>
#include <utility>

namespace drawlist {

namespace {

/// Turns by less than this (as a cosine) keep their outer corner, which reaches hardly beyond a round one.
constexpr float GENTLE = 0.6F;

/// Segments shorter than this have no direction.
constexpr float SHORTEST = 0.001F;

/// How far from its point the outer corner of a gentle turn lies, as a multiple of the distance of the
/// borders: 1 / cos(half the turn).
constexpr float FARTHEST_CORNER = 1.12F;

glm::vec2 rightOf(const glm::vec2& direction) {
    return {-direction.y, direction.x};
}

}  // namespace

void StrokeTessellator::draw(Batch& batch, const glm::vec2* points, std::size_t count, float width,
                             const StrokePaint& paint, const raster::PixelRect& clip) {
    if (clip.isEmpty() || !paint.line.isVisible()) {
        return;
    }
    const Target target{batch, Clip(clip), width};
    const glm::vec2* const end = points + count;
    while (points != end) {
        const glm::vec2* const first = std::find_if(points, end, raster::isFinite);
        points = std::find_if_not(first, end, raster::isFinite);
        if (points - first >= 2) {
            mPoints.clear();
            appendSimplified(first, static_cast<std::size_t>(points - first), 1, mPoints);
            drawRun(target, paint);
        }
    }
}

/// How to draw a run.
struct StrokeTessellator::Pen {
    Pen(const Target& to, const Paint& color, float borders)
        : batch(to.batch),
          clip(to.clip),
          paint(color),
          reach(borders),
          right(toVertex({{}, 0.0F}, color)),
          middle(toVertex({{}, 0.5F}, color)),
          left(toVertex({{}, 1.0F}, color)) {}

    /// Whether the clip contains all that is drawn around a gentle turn or between two of them.
    bool hasRoom(const glm::vec2& point) const {
        const float farthest = reach * FARTHEST_CORNER;
        return point.x - farthest >= clip.left && point.x + farthest <= clip.right &&
               point.y - farthest >= clip.top && point.y + farthest <= clip.bottom;
    }

    Batch& batch;
    const Clip& clip;
    const Paint& paint;
    float reach;  ///< from the line's middle to its borders
    Vertex right;
    Vertex middle;
    Vertex left;
};

void StrokeTessellator::drawRun(const Target& target, const StrokePaint& paint) {
    mSegments.resize(mPoints.size() + 1);
    std::size_t kept = 0;
    for (std::size_t i = 1; i < mPoints.size(); ++i) {
        const glm::vec2 way = mPoints[i] - mPoints[kept];
        const float length = std::sqrt(glm::dot(way, way));
        if (!(length > SHORTEST) || !std::isfinite(length)) {
            continue;
        }
        Segment& segment = mSegments[kept];
        segment.direction = way / length;
        segment.length = length;
        mPoints[++kept] = mPoints[i];
    }
    if (kept == 0) {  // all in one place: a dot
        mSegments[0].direction = {1.0F, 0.0F};
        mSegments[0].length = 0.0F;
        mPoints[++kept] = mPoints[0];
    }
    mPoints.resize(kept + 1);
    mSegments.resize(kept + 1);
    mSegments[0].turn = mSegments[kept].turn = 0.0F;
    for (std::size_t i = 1; i < kept; ++i) {
        const glm::vec2& from = mSegments[i - 1].direction;
        const glm::vec2& to = mSegments[i].direction;
        mSegments[i].turn = from.x * to.y - from.y * to.x;
    }

    const Paint both = paint.line.along(GlyphCache::profile(Part::BOTH));
    if (paint.isOutlineBlack && paint.outline.isVisible() && addRun(target, Part::BOTH, both, true)) {
        return;
    }
    // Where segments lie on each other, no outline may lie on a line.
    if (paint.outline.isVisible()) {
        addRun(target, Part::OUTLINE, paint.outline.along(GlyphCache::profile(Part::OUTLINE)), false);
    }
    addRun(target, Part::INK, paint.line.along(GlyphCache::profile(Part::INK)), false);
}

StrokeTessellator::Section StrokeTessellator::across(const glm::vec2& point, const Segment& segment,
                                                     float reach) {
    const glm::vec2 side = reach * rightOf(segment.direction);
    return {point + side, point - side};
}

/// False, and nothing is added, when segments lie on each other and must not.
bool StrokeTessellator::addRun(const Target& target, Part part, const Paint& paint, bool mustMeet) {
    const Pen pen(target, paint, GlyphCache::reach(target.width, part));
    const std::size_t count = mSegments.size() - 1;
    mSegments[0].start = across(mPoints[0], mSegments[0], pen.reach);
    mSegments[count - 1].end = across(mPoints[count], mSegments[count - 1], pen.reach);
    mJoints.clear();
    for (std::size_t i = 1; i < count; ++i) {
        if (!join(pen.reach, i) && mustMeet) {
            return false;
        }
    }
    bool hasRoom = pen.hasRoom(mPoints[0]);
    for (std::size_t i = 0; i < count; ++i) {
        const bool hadRoom = std::exchange(hasRoom, pen.hasRoom(mPoints[i + 1]));
        addSegment(pen, mSegments[i], hadRoom && hasRoom);
    }
    for (const Joint& joint : mJoints) {
        addJoint(pen, joint);
    }
    const auto addEnd = [&](const glm::vec2& point, const Section& section, const glm::vec2& direction) {
        addArc(pen, point, {section[0] - point, pen.reach * direction, section[1] - point});
    };
    addEnd(mPoints[0], mSegments[0].start, -mSegments[0].direction);
    addEnd(mPoints[count], mSegments[count - 1].end, mSegments[count - 1].direction);
    return true;
}

/// How much of a segment the inner corner of a joint may take: a joint at the other end that turns the same
/// way takes its own half.
float StrokeTessellator::roomAt(std::size_t segment) const {
    const bool isShared = mSegments[segment].turn * mSegments[segment + 1].turn > 0.0F;
    return mSegments[segment].length * (isShared ? 0.5F : 1.0F);
}

/// False when the segments are too short for it, so that they lie on each other on the inner side.
bool StrokeTessellator::join(float reach, std::size_t index) {
    Segment& before = mSegments[index - 1];
    Segment& after = mSegments[index];
    const glm::vec2& point = mPoints[index];
    const float cosine = glm::dot(before.direction, after.direction);

    // The borders of both segments meet on the bisector, if the segments are long enough: reach / cos(half
    // the turn) from the point, which takes reach * tan(half the turn) of each.
    const float share = reach / (1.0F + cosine);
    const glm::vec2 corner = share * rightOf(before.direction + after.direction);
    const bool isMeeting = share * std::fabs(after.turn) < std::min(roomAt(index - 1), roomAt(index));
    if (isMeeting && cosine > GENTLE) {
        before.end = after.start = {point + corner, point - corner};
        return true;
    }
    before.end = across(point, before, reach);
    after.start = across(point, after, reach);
    const std::size_t inner = after.turn > 0.0F ? 0 : 1;
    const std::size_t outer = 1 - inner;
    if (isMeeting) {
        before.end[inner] = after.start[inner] = inner == 0 ? point + corner : point - corner;
    }
    constexpr float SMALLEST = 1e-4F;
    const float sinHalf = std::sqrt(std::max(0.5F * (1.0F - cosine), SMALLEST));
    const glm::vec2 outwards = (0.5F * reach / sinHalf) * (before.direction - after.direction);
    mJoints.push_back({point, outwards, before.end[inner], before.end[outer], after.start[outer], isMeeting});
    return isMeeting;
}

void StrokeTessellator::addSegment(const Pen& pen, const Segment& segment, bool isInside) {
    const Section& start = segment.start;
    const Section& end = segment.end;
    if (!isInside) {
        pen.batch.addQuad({start[0], 0.0F}, {end[0], 0.0F}, {end[1], 1.0F}, {start[1], 1.0F}, pen.paint,
                          pen.clip);
        return;
    }
    Vertex* const vertices = pen.batch.grow(6);
    vertices[0] = vertices[3] = moved(pen.right, start[0]);
    vertices[1] = moved(pen.right, end[0]);
    vertices[2] = vertices[4] = moved(pen.left, end[1]);
    vertices[5] = moved(pen.left, start[1]);
}

void StrokeTessellator::addJoint(const Pen& pen, const Joint& joint) {
    const glm::vec2& point = joint.point;
    if (joint.isMeeting && pen.hasRoom(point) && pen.clip.contains(joint.inner)) {
        Vertex* const vertices = pen.batch.grow(6);
        vertices[0] = vertices[3] = moved(pen.right, joint.inner);
        vertices[1] = vertices[5] = moved(pen.middle, point);
        vertices[2] = moved(pen.left, joint.before);
        vertices[4] = moved(pen.left, joint.after);
    } else if (joint.isMeeting) {
        const Corner inner{joint.inner, 0.0F};
        const Corner middle{point, 0.5F};
        pen.batch.addTriangle(inner, middle, {joint.before, 1.0F}, pen.paint, pen.clip);
        pen.batch.addTriangle(inner, {joint.after, 1.0F}, middle, pen.paint, pen.clip);
    }
    addArc(pen, point, {joint.before - point, joint.outwards, joint.after - point});
}

/// From one border of a stroke over another place to a third, all of them seen from `center` and at the same
/// distance.
void StrokeTessellator::addArc(const Pen& pen, const glm::vec2& center,
                               const std::array<glm::vec2, 3>& places) {
    const auto& [from, middle, to] = places;
    const auto between = [&pen](const glm::vec2& a, const glm::vec2& b) {
        const glm::vec2 sum = a + b;
        return sum * (pen.reach / std::sqrt(glm::dot(sum, sum)));
    };
    std::array<glm::vec2, 5> rim{center + from, center + middle, center + to};
    std::size_t triangles = 2;  // for a quarter of a circle
    if (!(glm::dot(from, to) > 0.0F)) {
        rim = {rim[0], center + between(from, middle), rim[1], center + between(middle, to), rim[2]};
        triangles = 4;
    }
    if (!pen.hasRoom(center)) {
        for (std::size_t i = 0; i < triangles; ++i) {
            pen.batch.addTriangle({center, 0.5F}, {rim[i], 0.0F}, {rim[i + 1], 0.0F}, pen.paint, pen.clip);
        }
        return;
    }
    Vertex* vertex = pen.batch.grow(3 * triangles);
    for (std::size_t i = 0; i < triangles; ++i) {
        *vertex++ = moved(pen.middle, center);
        *vertex++ = moved(pen.right, rim[i]);
        *vertex++ = moved(pen.right, rim[i + 1]);
    }
}

}  // namespace drawlist
