#pragma once

#include <glm/vec2.hpp>

#include <cstddef>
#include <vector>

#include "drawlist/Batch.h"
#include "raster/Geometry.h"

namespace drawlist {

/// Turns a line through points into triangles: a core that covers its pixels, and a border one pixel wide
/// over which the coverage falls to nothing, with round joints and ends. Nothing is covered twice. Keeps its
/// memory from use to use.
class StrokeTessellator {
public:
    /// `count` points in surface pixels, `width` (at least 1) in pixels. Where a point is not finite there is
    /// a gap. Nothing reaches out of `clip`, which lies inside the batch's own clip.
    void draw(Batch& batch, const glm::vec2* points, std::size_t count, float width, const Paint& paint,
              const raster::PixelRect& clip);

private:
    /// The corners of a segment at one of its ends, on its two sides.
    struct Section {
        glm::vec2 core[2] = {};
        glm::vec2 border[2] = {};
    };
    struct Segment {
        glm::vec2 direction{0.0F};
        float length = 0.0F;
        Section start;
        Section end;
    };
    /// Where everything goes.
    struct Target {
        Batch& batch;
        const Paint& paint;
        Clip clip{{}};
        float core = 0.0F;   ///< half width of what is covered fully
        float reach = 0.0F;  ///< half width of what is covered at all
    };

    void drawRun(const Target& target);
    void join(const Target& target, std::size_t index);
    float roomAt(std::size_t segment, bool isStart, float turn) const;
    static void addArc(const Target& target, const glm::vec2& center, const glm::vec2& hub,
                       const glm::vec2& from, const glm::vec2& middle, const glm::vec2& to);
    static void addBody(const Target& target, const Section& start, const Section& end);

    std::vector<glm::vec2> mPoints;  ///< of a run without gap
    std::vector<Segment> mSegments;
    std::vector<float> mTurns;  ///< at each point: more than 0 to the right, less to the left
};

}  // namespace drawlist
