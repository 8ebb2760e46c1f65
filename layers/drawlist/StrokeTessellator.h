#pragma once

#include "drawlist/Batch.h"
#include "drawlist/GlyphCache.h"
#include "raster/Geometry.h"
#include "raster/Outline.h"

#include <array>
#include <cstddef>
#include <glm/vec2.hpp>
#include <vector>

namespace drawlist {

/// Colours of a line and of its outline, which may be none.
struct StrokePaint {
    explicit StrokePaint(const glm::vec4& color)
        : line(color), outline(raster::outlineColor(color)), isOutlineBlack(!raster::isDark(color)) {}
    explicit StrokePaint(const Paint& color) : line(color), outline(glm::vec4(0.0F)) {}

    Paint line;
    Paint outline;
    bool isOutlineBlack = true;
};

/// Turns a line through points into triangles with round joints and ends, which the profile of a stroke in
/// the glyph texture lies across. Covers nothing twice. Reuses its memory.
class StrokeTessellator {
public:
    /// `count` points in surface pixels, `width` that of the surface's lines. Where a point is not finite
    /// there is a gap. Nothing reaches out of `clip`, which lies inside the batch's own clip.
    void draw(Batch& batch, const glm::vec2* points, std::size_t count, float width, const StrokePaint& paint,
              const raster::PixelRect& clip);

private:
    /// The corners of a segment at one of its ends, on its right side and on its left.
    using Section = std::array<glm::vec2, 2>;
    struct Segment {
        glm::vec2 direction{0.0F};
        float length = 0.0F;
        float turn = 0.0F;  ///< where it begins: more than 0 to the right, less to the left
        Section start{};
        Section end{};
    };
    /// A sharp turn: its inner corner, and between the ends of the segments on the outer side an arc.
    struct Joint {
        glm::vec2 point;
        glm::vec2 outwards;  ///< from the point to the middle of the arc
        glm::vec2 inner;
        glm::vec2 before;
        glm::vec2 after;
        bool isMeeting;  ///< at the inner corner
    };
    /// Where everything goes.
    struct Target {
        Batch& batch;
        Clip clip{{}};
        float width = 0.0F;
    };
    struct Pen;

    void drawRun(const Target& target, const StrokePaint& paint);
    bool addRun(const Target& target, Part part, const Paint& paint, bool mustMeet);
    static Section across(const glm::vec2& point, const Segment& segment, float reach);
    bool join(float reach, std::size_t index);
    float roomAt(std::size_t segment) const;
    static void addSegment(const Pen& pen, const Segment& segment, bool isInside);
    static void addJoint(const Pen& pen, const Joint& joint);
    static void addArc(const Pen& pen, const glm::vec2& center, const std::array<glm::vec2, 3>& places);

    std::vector<glm::vec2> mPoints;  ///< of a run without gap
    std::vector<Segment> mSegments;  ///< from each point to the next one; the last one has only its turn
    std::vector<Joint> mJoints;
};

}  // namespace drawlist
