#pragma once

#include "software/Image.h"

#include <glm/vec4.hpp>

#include <cstdint>

namespace software {

/// Alpha values carry 16 bits while they are worked with, so that thin coverage is not rounded away.
constexpr std::uint32_t FULL_ALPHA = 65535;

/// A drawing colour ready for blending.
struct Paint {
    Pixel mColor;         ///< its alpha is not used
    float mAlpha = 0.0F;  ///< 0..1
};

/// From RGBA components 0..1; what lies outside is cut, not-a-number counts as 0.
Paint makePaint(const glm::vec4& color);

/// A share 0..1 as 0..FULL_ALPHA; what lies outside is cut, not-a-number counts as 0.
inline std::uint32_t toAlpha(float share) {
    if (!(share > 0.0F)) {
        return 0;
    }
    return share < 1.0F ? static_cast<std::uint32_t>(share * static_cast<float>(FULL_ALPHA) + 0.5F)
                        : FULL_ALPHA;
}

/// Lays a colour of the given alpha (0..FULL_ALPHA) over a pixel whose own alpha may be below 1.
/// Integer arithmetic: the same result on every compiler.
void blendOver(Pixel& target, const Pixel& color, std::uint32_t alpha);

}  // namespace software
