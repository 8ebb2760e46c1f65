#pragma once

#include "raster/Luminance.h"

#include <glm/vec4.hpp>

namespace raster {

/// Width in pixels of the outline around glyphs and curves.
constexpr float OUTLINE_WIDTH = 1.0F;

/// White around dark colours and black around all others, of the same alpha.
inline glm::vec4 outlineColor(const glm::vec4& color) {
    const float shade = isDark(color) ? 1.0F : 0.0F;
    return {shade, shade, shade, color.a};
}

/// Ink and the outline below it in one pixel, as shares of it from 0 to 1: how much of it the two cover
/// together, and how much of that is ink.
struct Outlined {
    Outlined(float inkCover, float outlineCover)
        : cover(1.0F - (1.0F - inkCover) * (1.0F - outlineCover)),
          ink(cover > 0.0F ? inkCover / cover : 0.0F) {}

    float cover;
    float ink;
};

}  // namespace raster
