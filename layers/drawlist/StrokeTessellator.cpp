#include "drawlist/StrokeTessellator.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <array>
#include <cmath>

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
                             const Paint& paint, const raster::PixelRect& clip) {
    if (clip.isEmpty() || !paint.isVisible()) {
        return;
    }
    const Target target{batch, paint, Clip(clip), std::max(0.5F * width - 0.5F, 0.0F), 0.5F * width + 0.5F};
    const glm::vec2* const end = points + count;
    while (points != end) {
        const glm::vec2* const first = std::find_if(points, end, raster::isFinite);
        points = std::find_if_not(first, end, raster::isFinite);
        if (points - first >= 2) {
            mPoints.clear();
            appendSimplified(first, points, mPoints);
            drawRun(target);
        }
    }
}

void StrokeTessellator::drawRun(const Target& target) {
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

    const auto square = [&target](const glm::vec2& point, const glm::vec2& direction) {
        const glm::vec2 side = rightOf(direction);
        return Section{{point + target.core * side, point - target.core * side},
                       {point + target.reach * side, point - target.reach * side}};
    };
    for (std::size_t i = 0; i <= last; ++i) {
        Segment& segment = mSegments[i];
        segment.start = square(mPoints[i], segment.direction);
        segment.end = square(mPoints[i + 1], segment.direction);
    }
    for (std::size_t i = 1; i <= last; ++i) {
        join(target, i);
    }
    for (const Segment& segment : mSegments) {
        addBody(target, segment.start, segment.end);
    }
    const glm::vec2& first = mSegments.front().direction;
    const glm::vec2& final = mSegments.back().direction;
    addArc(target, mPoints[0], mPoints[0], rightOf(first), -first, -rightOf(first));
    addArc(target, mPoints[last + 1], mPoints[last + 1], rightOf(final), final, -rightOf(final));
}

/// How much of a segment the inner corner of a joint may take: a joint at the other end that turns the same
/// way takes its own half.
float StrokeTessellator::roomAt(std::size_t segment, bool isStart, float turn) const {
    const float otherTurn = mTurns[isStart ? segment + 1 : segment];
    const bool isShared = otherTurn * turn > 0.0F;
    return mSegments[segment].length * (isShared ? 0.5F : 1.0F);
}

void StrokeTessellator::join(const Target& target, std::size_t index) {
    Segment& before = mSegments[index - 1];
    Segment& after = mSegments[index];
    const glm::vec2& point = mPoints[index];
    const float turn = mTurns[index];
    const float cosine = glm::dot(before.direction, after.direction);
    const int inner = turn > 0.0F ? 0 : 1;
    const int outer = 1 - inner;
    const float side = inner == 0 ? 1.0F : -1.0F;
    const glm::vec2 sides = side * (rightOf(before.direction) + rightOf(after.direction));
    const glm::vec2 inwards =
        cosine > 0.0F ? unit(sides, side * rightOf(before.direction))
                      : unit(after.direction - before.direction, side * rightOf(before.direction));

    // The inner borders of both segments meet on the bisector, unless they are too short for that.
    constexpr float SMALLEST = 1e-4F;
    const float cosHalf = std::sqrt(std::max(0.5F * (1.0F + cosine), SMALLEST));
    const float sinHalf = std::sqrt(std::max(0.5F * (1.0F - cosine), SMALLEST));
    const float room = std::min(roomAt(index - 1, false, turn), roomAt(index, true, turn)) / sinHalf;
    const auto cornerAt = [&](float radius) { return point + inwards * std::min(radius / cosHalf, room); };
    before.end.core[inner] = after.start.core[inner] = cornerAt(target.core);
    before.end.border[inner] = after.start.border[inner] = cornerAt(target.reach);
    if (cosine > GENTLE) {
        before.end.core[outer] = after.start.core[outer] = point - inwards * (target.core / cosHalf);
        before.end.border[outer] = after.start.border[outer] = point - inwards * (target.reach / cosHalf);
        return;
    }
    addArc(target, point, before.end.core[inner], -side * rightOf(before.direction), -inwards,
           -side * rightOf(after.direction));
}

/// From one direction over another to a third around `center`; what is covered fully spans from there to
/// `hub`.
void StrokeTessellator::addArc(const Target& target, const glm::vec2& center, const glm::vec2& hub,
                               const glm::vec2& from, const glm::vec2& middle, const glm::vec2& to) {
    const std::array<glm::vec2, 5> directions = {from, unit(from + middle, middle), middle,
                                                 unit(middle + to, middle), to};
    const std::size_t step = glm::dot(from, to) > 0.0F ? 2 : 1;  // a quarter of a circle needs half of them
    for (std::size_t i = step; i < directions.size(); i += step) {
        const Corner core{center + target.core * directions[i - step], 1.0F};
        const Corner nextCore{center + target.core * directions[i], 1.0F};
        const Corner border{center + target.reach * directions[i - step], 0.0F};
        const Corner nextBorder{center + target.reach * directions[i], 0.0F};
        if (target.core > 0.0F) {
            target.batch.addTriangle({hub, 1.0F}, core, nextCore, target.paint, target.clip);
            target.batch.addTriangle(core, nextBorder, nextCore, target.paint, target.clip);
        }
        target.batch.addTriangle(core, border, nextBorder, target.paint, target.clip);
    }
}

void StrokeTessellator::addBody(const Target& target, const Section& start, const Section& end) {
    const Corner core[2][2] = {{{start.core[0], 1.0F}, {end.core[0], 1.0F}},
                               {{start.core[1], 1.0F}, {end.core[1], 1.0F}}};
    if (target.core > 0.0F) {
        target.batch.addQuad(core[0][0], core[0][1], core[1][1], core[1][0], target.paint, target.clip);
    }
    for (int side = 0; side < 2; ++side) {
        target.batch.addQuad(core[side][0], core[side][1], {end.border[side], 0.0F},
                             {start.border[side], 0.0F}, target.paint, target.clip);
    }
}

}  // namespace drawlist
