#include "drawlist/Polyline.h"

#include <algorithm>
#include <cmath>

namespace drawlist {

namespace {

/// How many pixels a point may lie above or below the line between its neighbours to be left out.
constexpr float TOLERANCE = 0.02F;

/// The slopes from a point that pass close enough to all points left out so far.
class Slopes {
public:
    void start(const glm::vec2& from, const glm::vec2& to) {
        mFrom = from;
        mLow = -HUGE_VALF;
        mHigh = HUGE_VALF;
        narrow(to);
    }

    bool leadTo(const glm::vec2& to) const {
        const glm::vec2 way = to - mFrom;
        return way.x > 0.0F && way.y >= mLow * way.x && way.y <= mHigh * way.x;
    }

    void narrow(const glm::vec2& past) {
        const glm::vec2 way = past - mFrom;
        if (!(way.x > 0.0F)) {
            mLow = HUGE_VALF;  // not a graph: leave out no points
            return;
        }
        mLow = std::max(mLow, (way.y - TOLERANCE) / way.x);
        mHigh = std::min(mHigh, (way.y + TOLERANCE) / way.x);
    }

private:
    glm::vec2 mFrom{0.0F};
    float mLow = 0.0F;
    float mHigh = 0.0F;
};

}  // namespace

void appendSimplified(const glm::vec2* first, const glm::vec2* end, std::vector<glm::vec2>& points) {
    if (first == end) {
        return;
    }
    points.push_back(*first);
    if (first + 1 == end) {
        return;
    }
    Slopes slopes;
    slopes.start(*first, first[1]);
    for (const glm::vec2* next = first + 2; next != end; ++next) {
        if (slopes.leadTo(*next)) {
            slopes.narrow(*next);
        } else {
            points.push_back(next[-1]);
            slopes.start(next[-1], *next);
        }
    }
    points.push_back(end[-1]);
}

}  // namespace drawlist
