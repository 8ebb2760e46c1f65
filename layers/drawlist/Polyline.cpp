#include "drawlist/Polyline.h"

#include <algorithm>
#include <cmath>

namespace drawlist {

namespace {

/// How many pixels a point may lie above or below the line between its neighbours to be left out.
constexpr float STRAIGHT_TOLERANCE = 0.02F;

/// The slopes from a point that pass close enough to all points left out so far.
class Slopes {
public:
    void start(const glm::vec2& from, const glm::vec2& to) {
        mFrom = from;
        mLow = -HUGE_VALF;
        mHigh = HUGE_VALF;
        narrow(to);
    }

    /// Leaves out one more, if those so far stay close to the line to it.
    bool narrow(const glm::vec2& past) {
        const glm::vec2 way = past - mFrom;
        const float perPixel = 1.0F / way.x;
        const float slope = way.y * perPixel;
        if (!(way.x > 0.0F && slope >= mLow && slope <= mHigh)) {
            mLow = HUGE_VALF;  // not a graph, or a bend
            return false;
        }
        mLow = std::max(mLow, slope - STRAIGHT_TOLERANCE * perPixel);
        mHigh = std::min(mHigh, slope + STRAIGHT_TOLERANCE * perPixel);
        return true;
    }

private:
    glm::vec2 mFrom{0.0F};
    float mLow = 0.0F;
    float mHigh = 0.0F;
};

}  // namespace

void appendSimplified(const glm::vec2* first, std::size_t count, std::size_t step,
                      std::vector<glm::vec2>& points) {
    if (count == 0) {
        return;
    }
    points.push_back(*first);
    if (count == 1) {
        return;
    }
    const glm::vec2* last = first + step;
    Slopes slopes;
    slopes.start(*first, *last);
    for (std::size_t i = 2; i < count; ++i) {
        const glm::vec2* const next = last + step;
        if (!slopes.narrow(*next)) {
            points.push_back(*last);
            slopes.start(*last, *next);
        }
        last = next;
    }
    points.push_back(*last);
}

}  // namespace drawlist
