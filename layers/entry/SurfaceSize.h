#pragma once

namespace entry {

/// Width and height in pixels.
struct SurfaceSize {
    int width = 0;
    int height = 0;

    /// There is something to draw on: programs keep windows of a single pixel that nobody sees.
    bool isDrawable() const { return width > 1 && height > 1; }
    bool operator==(const SurfaceSize& other) const { return width == other.width && height == other.height; }
    bool operator!=(const SurfaceSize& other) const { return !(*this == other); }
};

/// Why there is no overlay on a surface that is not drawable.
inline constexpr const char* TOO_SMALL = "its window has only one pixel, or one row or column of them";

}  // namespace entry
