#pragma once

#include "software/Image.h"

#include <cstdint>
#include <glm/vec4.hpp>

namespace software {

/// Alpha values carry 16 bits while they are worked with, so that thin coverage is not rounded away.
constexpr std::uint32_t FULL_ALPHA = 65535;

/// A drawing colour ready for blending.
struct Paint {
    Pixel color;          ///< its alpha is not used
    float alpha = 0.0F;   ///< 0..1
    bool isDark = false;  ///< its outline is white, not black
};

/// From RGBA components 0..1; what lies outside is cut, not-a-number counts as 0.
Paint makePaint(const glm::vec4& color);

/// A share 0..1 as 0..FULL_ALPHA; what lies outside is cut, not-a-number counts as 0.
inline std::uint32_t toAlpha(float share) {
    constexpr float ROUNDING = 0.5F;  // the value is positive; a call of lround for each pixel would tell
    if (!(share > 0.0F)) {
        return 0;
    }
    const float scaled = share * static_cast<float>(FULL_ALPHA);
    return share < 1.0F ? static_cast<std::uint32_t>(scaled + ROUNDING) : FULL_ALPHA;
}

/// blendOver() for any target and an alpha above 0.
void blendOverTransparent(Pixel& target, const Pixel& color, std::uint32_t alpha);

/// Lays a colour of the given alpha (0..FULL_ALPHA) over a pixel whose own alpha may be below 1.
/// Integer arithmetic: the same result on every compiler.
inline void blendOver(Pixel& target, const Pixel& color, std::uint32_t alpha) {
    if (alpha == 0) {
        return;
    }
    if (target.alpha != 255) {
        blendOverTransparent(target, color, alpha);
        return;
    }
    const auto mix = [alpha](std::uint32_t over, std::uint32_t under) {
        const std::uint32_t sum = over * alpha + under * (FULL_ALPHA - alpha);
        return static_cast<std::uint8_t>((sum + FULL_ALPHA / 2) / FULL_ALPHA);
    };
    target.red = mix(color.red, target.red);
    target.green = mix(color.green, target.green);
    target.blue = mix(color.blue, target.blue);
}

}  // namespace software
