#include "drawlist/StrokeTessellator.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <array>
#include <cmath>

#include "drawlist/GlyphCache.h"
#include "drawlist/Polyline.h"

namespace drawlist {

namespace {

/// Turns by less than this (as a cosine) keep their outer corner, which reaches hardly beyond a round one.
constexpr float GENTLE = 0.6F;

/// Segments shorter than this have no direction.
constexpr float SHORTEST = 0.001F;

glm::vec2 rightOf(const glm::vec2& direction) {
    return {-direction.y, direction.x};
}

/// `other` when the vector is too short to have a direction.
glm::vec2 unit(const glm::vec2& vector, const glm::vec2& other) {
    const float length = std::sqrt(glm::dot(vector, vector));
    return length > SHORTEST ? vector / length : other;
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
            appendSimplified(first, points, mPoints);
            drawRun(target, paint);
        }
    }
}

void StrokeTessellator::drawRun(const Target& target, const StrokePaint& paint) {
    mSegments.clear();
    mTurns.clear();
    std::size_t kept = 0;
    for (std::size_t i = 1; i < mPoints.size(); ++i) {
        const glm::vec2 way = mPoints[i] - mPoints[kept];
        const float length = std::sqrt(glm::dot(way, way));
        if (!(length > SHORTEST) || !std::isfinite(length)) {
            continue;
        }
        Segment segment;
        segment.direction = way / length;
        segment.length = length;
        mSegments.push_back(segment);
        mPoints[++kept] = mPoints[i];
    }
    if (mSegments.empty()) {  // all in one place: a dot
        Segment dot;
        dot.direction = {1.0F, 0.0F};
        mSegments.push_back(dot);
        mPoints[1] = mPoints[0];
    }
    const std::size_t last = mSegments.size() - 1;
    mTurns.push_back(0.0F);
    for (std::size_t i = 0; i < last; ++i) {
        const glm::vec2& from = mSegments[i].direction;
        const glm::vec2& to = mSegments[i + 1].direction;
        mTurns.push_back(from.x * to.y - from.y * to.x);
    }
    mTurns.push_back(0.0F);

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

/// False, and nothing is added, when segments lie on each other and must not.
bool StrokeTessellator::addRun(const Target& target, Part part, const Paint& paint, bool mustMeet) {
    const float reach = GlyphCache::reach(target.width, part);
    for (std::size_t i = 0; i < mSegments.size(); ++i) {
        Segment& segment = mSegments[i];
        const glm::vec2 side = reach * rightOf(segment.direction);
        segment.start = {{{mPoints[i] + side, 0.0F}, {mPoints[i] - side, 1.0F}}};
        segment.end = {{{mPoints[i + 1] + side, 0.0F}, {mPoints[i + 1] - side, 1.0F}}};
    }
    mJoints.clear();
    for (std::size_t i = 1; i < mSegments.size(); ++i) {
        if (!join(reach, i) && mustMeet) {
            return false;
        }
    }
    for (const Segment& segment : mSegments) {
        target.batch.addQuad(segment.start[0], segment.end[0], segment.end[1], segment.start[1], paint,
                             target.clip);
    }
    for (const Joint& joint : mJoints) {
        const Corner middle{joint.point, 0.5F};
        if (joint.isMeeting) {
            target.batch.addTriangle(joint.inner, middle, joint.before, paint, target.clip);
            target.batch.addTriangle(joint.inner, joint.after, middle, paint, target.clip);
        }
        addArc(target, paint, joint.point,
               {joint.before.point - joint.point, reach * joint.outwards, joint.after.point - joint.point});
    }
    const auto addEnd = [&](const Section& section, const glm::vec2& point, const glm::vec2& outwards) {
        addArc(target, paint, point, {section[0].point - point, reach * outwards, section[1].point - point});
    };
    const Segment& first = mSegments.front();
    const Segment& final = mSegments.back();
    addEnd(first.start, mPoints[0], -first.direction);
    addEnd(final.end, mPoints[mSegments.size()], final.direction);
    return true;
}

/// How much of a segment the inner corner of a joint may take: a joint at the other end that turns the same
/// way takes its own half.
float StrokeTessellator::roomAt(std::size_t segment, bool isStart, float turn) const {
    const float otherTurn = mTurns[isStart ? segment + 1 : segment];
    const bool isShared = otherTurn * turn > 0.0F;
    return mSegments[segment].length * (isShared ? 0.5F : 1.0F);
}

/// False when the segments are too short for it, so that they lie on each other on the inner side.
bool StrokeTessellator::join(float reach, std::size_t index) {
    Segment& before = mSegments[index - 1];
    Segment& after = mSegments[index];
    const glm::vec2& point = mPoints[index];
    const float turn = mTurns[index];
    const float cosine = glm::dot(before.direction, after.direction);
    const std::size_t inner = turn > 0.0F ? 0 : 1;
    const std::size_t outer = 1 - inner;
    const float side = inner == 0 ? 1.0F : -1.0F;
    const glm::vec2 sides = side * (rightOf(before.direction) + rightOf(after.direction));
    const glm::vec2 inwards =
        cosine > 0.0F ? unit(sides, side * rightOf(before.direction))
                      : unit(after.direction - before.direction, side * rightOf(before.direction));

    // The inner borders of both segments meet on the bisector, if the segments are long enough.
    constexpr float SMALLEST = 1e-4F;
    const float cosHalf = std::sqrt(std::max(0.5F * (1.0F + cosine), SMALLEST));
    const float sinHalf = std::sqrt(std::max(0.5F * (1.0F - cosine), SMALLEST));
    const float toCorner = reach / cosHalf;
    const bool isMeeting =
        toCorner * sinHalf < std::min(roomAt(index - 1, false, turn), roomAt(index, true, turn));
    if (isMeeting) {
        before.end[inner].point = after.start[inner].point = point + inwards * toCorner;
        if (cosine > GENTLE) {
            before.end[outer].point = after.start[outer].point = point - inwards * toCorner;
            return true;
        }
    }
    mJoints.push_back({point, -inwards, before.end[inner], before.end[outer], after.start[outer], isMeeting});
    return isMeeting;
}

/// From one border of a stroke over another place to a third, all of them seen from `center` and at the same
/// distance.
void StrokeTessellator::addArc(const Target& target, const Paint& paint, const glm::vec2& center,
                               const std::array<glm::vec2, 3>& places) {
    const auto [from, middle, to] = places;
    const float reach = std::sqrt(glm::dot(from, from));
    const auto between = [reach](const glm::vec2& a, const glm::vec2& b) { return reach * unit(a + b, b); };
    const std::array<glm::vec2, 5> all = {from, between(from, middle), middle, between(middle, to), to};
    const std::size_t step = glm::dot(from, to) > 0.0F ? 2 : 1;  // a quarter of a circle needs half of them
    for (std::size_t i = step; i < all.size(); i += step) {
        target.batch.addTriangle({center, 0.5F}, {center + all[i - step], 0.0F}, {center + all[i], 0.0F},
                                 paint, target.clip);
    }
}

}  // namespace drawlist
