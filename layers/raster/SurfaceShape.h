#pragma once

#include "raster/Geometry.h"

#include <cstdint>
#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

namespace raster {

/// The size of a surface, and conversions that follow from it. The virtual canvas covers the whole surface,
/// so canvas fractions are fractions of the surface. A value type.
struct SurfaceShape {
    std::uint32_t width = 0;  ///< pixels
    std::uint32_t height = 0;

    /// Converts canvas fractions and a translation in clip-space units to pixels. The canvas spans 2
    /// clip-space units, and the translation's y points up: (0.1, 0.1) moves by a twentieth of the canvas to
    /// the right and a twentieth upwards.
    Box toPixels(const glm::vec2& position, const glm::vec2& size, const glm::vec3& translation) const;

    /// Returns the matrix from local coordinates of such a rectangle, -1 at the top left to 1 at the bottom
    /// right, to pixels.
    glm::mat4 localToPixels(const glm::vec2& position, const glm::vec2& size,
                            const glm::vec3& translation) const;

    /// Rounds a rectangle in canvas fractions to whole pixels of the surface.
    PixelRect toWholePixels(const glm::vec2& position, const glm::vec2& size) const;

    /// All pixels of the surface.
    PixelRect all() const { return {0, 0, static_cast<int>(width), static_cast<int>(height)}; }

    /// Height divided by width; 1 for an empty surface.
    float aspectRatio() const;

    /// The width in pixels of the lines of graphs and grids: one canvas unit, but at least a pixel.
    float lineWidth() const;
};

}  // namespace raster
