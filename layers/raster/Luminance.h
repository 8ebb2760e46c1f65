#pragma once

#include <algorithm>
#include <cmath>
#include <glm/vec4.hpp>

namespace raster {

/// The amount of light, 0..1, that a component of sRGB stands for. What lies beyond 0..1 is cut, not-a-number
/// counts as 0.
inline float toLight(float component) {
    const float value = component > 0.0F ? std::min(component, 1.0F) : 0.0F;
    return value <= 0.04045F ? value / 12.92F : std::pow((value + 0.055F) / 1.055F, 2.4F);
}

/// How bright a colour is as a screen shows it, 0..1; without its alpha.
inline float luminance(const glm::vec4& color) {
    return 0.2126F * toLight(color.r) + 0.7152F * toLight(color.g) + 0.0722F * toLight(color.b);
}

/// Whether a colour stands out better against white than against black. Against the better one the contrast,
/// (lighter + 0.05) / (darker + 0.05), is at least 4.5.
inline bool isDark(const glm::vec4& color) {
    constexpr float MIDDLE = 0.1791F;
    return luminance(color) < MIDDLE;
}

}  // namespace raster
