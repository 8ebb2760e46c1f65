#pragma once

#include "software/Image.h"

#include <cstdint>
#include <vector>

namespace demo {

/// The moving picture behind the overlay: an evening sky, a sun, hills that pass by, balloons. The picture is
/// a function of the size and the time alone.
class Landscape {
public:
    /// Draws the whole picture as it is `seconds` after the start.
    void draw(software::Image& image, double seconds);

private:
    static constexpr std::size_t HILL_COUNT = 4;

    void drawSky(software::Image& image) const;
    void drawHills(software::Image& image, double seconds);

    std::vector<float> mTops[HILL_COUNT];  // of each range of hills, by column
};

}  // namespace demo
