#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace software {

/// One pixel: 8 bits a channel, straight (not premultiplied) alpha.
struct Pixel {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 0;
};

inline bool operator==(const Pixel& a, const Pixel& b) {
    return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha;
}

/// The longest side of an image in pixels; a float still represents every position exactly.
constexpr std::uint32_t MAX_IMAGE_SIDE = 32768;

/// A picture in memory: rows from top to bottom without padding. A value type; may be empty.
class Image {
public:
    Image() = default;
    /// Transparent black. Longer sides are cut to MAX_IMAGE_SIDE.
    Image(std::uint32_t width, std::uint32_t height);

    /// Changes the size and makes every pixel transparent black.
    void resize(std::uint32_t width, std::uint32_t height);
    void fill(const Pixel& pixel);

    /// The first pixel of row y, which must be below mHeight.
    Pixel* row(std::size_t y) { return mPixels.data() + y * mWidth; }
    const Pixel* row(std::size_t y) const { return mPixels.data() + y * mWidth; }

    std::uint32_t mWidth = 0;
    std::uint32_t mHeight = 0;
    std::vector<Pixel> mPixels;  ///< mWidth * mHeight pixels
};

}  // namespace software
