#pragma once

#include <algorithm>
#include <cmath>
#include <glm/vec2.hpp>

namespace raster {

/// A rectangle in surface pixels, y downwards; (0, 0) is the top-left corner of the top-left pixel, so pixels
/// have their centres at halves. Edges may have any value, even NaN.
struct Box {
    float mLeft = 0.0F;
    float mTop = 0.0F;
    float mRight = 0.0F;
    float mBottom = 0.0F;
};

/// A rectangle of whole pixels, right and bottom exclusive; empty when right <= left or bottom <= top.
struct PixelRect {
    int mLeft = 0;
    int mTop = 0;
    int mRight = 0;
    int mBottom = 0;

    bool isEmpty() const { return mRight <= mLeft || mBottom <= mTop; }
    int width() const { return mRight - mLeft; }
    int height() const { return mBottom - mTop; }
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
    return {std::max(a.mLeft, b.mLeft), std::max(a.mTop, b.mTop), std::min(a.mRight, b.mRight),
            std::min(a.mBottom, b.mBottom)};
}

inline Box toBox(const PixelRect& rect) {
    return {static_cast<float>(rect.mLeft), static_cast<float>(rect.mTop), static_cast<float>(rect.mRight),
            static_cast<float>(rect.mBottom)};
}

/// The smallest rectangle with both in it.
inline PixelRect unite(const PixelRect& a, const PixelRect& b) {
    if (a.isEmpty()) {
        return b;
    }
    return b.isEmpty() ? a
                       : PixelRect{std::min(a.mLeft, b.mLeft), std::min(a.mTop, b.mTop),
                                   std::max(a.mRight, b.mRight), std::max(a.mBottom, b.mBottom)};
}

/// Every pixel of `limits` that the box touches; empty when an edge is NaN.
inline PixelRect touchedPixels(const Box& box, const PixelRect& limits) {
    if (!(box.mLeft < box.mRight) || !(box.mTop < box.mBottom)) {
        return {};
    }
    return {floorToInt(box.mLeft, limits.mLeft, limits.mRight),
            floorToInt(box.mTop, limits.mTop, limits.mBottom),
            ceilToInt(box.mRight, limits.mLeft, limits.mRight),
            ceilToInt(box.mBottom, limits.mTop, limits.mBottom)};
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
    return {round(low.x, limits.mLeft, limits.mRight), round(low.y, limits.mTop, limits.mBottom),
            round(high.x, limits.mLeft, limits.mRight), round(high.y, limits.mTop, limits.mBottom)};
}

/// How much of the pixel (or texel) index..index + 1 the interval low..high covers: 0..1.
inline float overlap(float low, float high, int index) {
    const auto start = static_cast<float>(index);
    return std::max(0.0F, std::min(high, start + 1.0F) - std::max(low, start));
}

}  // namespace raster
