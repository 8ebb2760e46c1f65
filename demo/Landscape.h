#pragma once

#include "software/Image.h"

#include <cstdint>
#include <vector>

namespace demo {

/// The moving picture behind the overlay: an evening sky, a sun, passing hills, balloons. It depends only on
/// the size and the time.
class Landscape {
public:
    /// Draws the whole picture as it looks `seconds` after the start.
    void draw(software::Image& image, double seconds);

private:
    static constexpr std::size_t HILL_COUNT = 4;

    void drawSky(software::Image& image) const;
    void drawHills(software::Image& image, double seconds);

    std::vector<float> mTops[HILL_COUNT];  // of each range of hills, by column
};

}  // namespace demo
