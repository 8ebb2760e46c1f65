#pragma once

#include <algorithm>
#include <cmath>
#include <glm/vec2.hpp>

namespace raster {

/// A rectangle in surface pixels, y downwards; (0, 0) is the top-left corner of the top-left pixel, so pixels
/// have their centres at halves. Edges may have any value, even NaN.
struct Box {
    float left = 0.0F;
    float top = 0.0F;
    float right = 0.0F;
    float bottom = 0.0F;
};

/// A rectangle of whole pixels, right and bottom exclusive; empty when right <= left or bottom <= top.
struct PixelRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    bool isEmpty() const { return right <= left || bottom <= top; }
    int width() const { return right - left; }
    int height() const { return bottom - top; }
};

inline bool isFinite(const glm::vec2& point) {
    return std::isfinite(point.x) && std::isfinite(point.y);
}

/// Clamps the value to low..high and converts it; NaN gives low.
inline int toInt(double value, int low, int high) {
    if (!(value > low)) {
        return low;
    }
    return value < high ? static_cast<int>(value) : high;
}

/// The same, rounded down or up; without the C library's functions, which are calls.
inline int floorToInt(double value, int low, int high) {
    const int whole = toInt(value, low, high);
    return whole > low && value < whole ? whole - 1 : whole;
}
inline int ceilToInt(double value, int low, int high) {
    const int whole = toInt(value, low, high);
    return whole < high && value > whole ? whole + 1 : whole;
}

inline PixelRect intersect(const PixelRect& a, const PixelRect& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

inline Box toBox(const PixelRect& rect) {
    return {static_cast<float>(rect.left), static_cast<float>(rect.top), static_cast<float>(rect.right),
            static_cast<float>(rect.bottom)};
}

/// The smallest rectangle with both in it.
inline PixelRect unite(const PixelRect& a, const PixelRect& b) {
    if (a.isEmpty()) {
        return b;
    }
    return b.isEmpty() ? a
                       : PixelRect{std::min(a.left, b.left), std::min(a.top, b.top),
                                   std::max(a.right, b.right), std::max(a.bottom, b.bottom)};
}

/// Every pixel of `limits` that the box touches; empty when an edge is NaN.
inline PixelRect touchedPixels(const Box& box, const PixelRect& limits) {
    if (!(box.left < box.right) || !(box.top < box.bottom)) {
        return {};
    }
    return {floorToInt(box.left, limits.left, limits.right), floorToInt(box.top, limits.top, limits.bottom),
            ceilToInt(box.right, limits.left, limits.right),
            ceilToInt(box.bottom, limits.top, limits.bottom)};
}

/// The rectangle between two opposite corners, moved to the nearest whole pixels, as far as it is in
/// `limits`; empty when a corner is NaN.
inline PixelRect nearestPixels(const glm::vec2& a, const glm::vec2& b, const PixelRect& limits) {
    const glm::vec2 low(std::min(a.x, b.x), std::min(a.y, b.y));
    const glm::vec2 high(std::max(a.x, b.x), std::max(a.y, b.y));
    if (!(low.x <= high.x) || !(low.y <= high.y)) {
        return {};
    }
    const auto round = [](float value, int from, int to) { return floorToInt(value + 0.5F, from, to); };
    return {round(low.x, limits.left, limits.right), round(low.y, limits.top, limits.bottom),
            round(high.x, limits.left, limits.right), round(high.y, limits.top, limits.bottom)};
}

/// How much of the pixel (or texel) index..index + 1 the interval low..high covers: 0..1.
inline float overlap(float low, float high, int index) {
    const auto start = static_cast<float>(index);
    return std::max(0.0F, std::min(high, start + 1.0F) - std::max(low, start));
}

}  // namespace raster
