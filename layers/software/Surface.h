#pragma once

#include "software/Geometry.h"
#include "software/Image.h"
#include "software/Rasterizer.h"

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <cstdint>

namespace software {

/// What the overlay is drawn on: the application's picture, of any size, landscape or portrait. The virtual
/// canvas spans all of it, so that canvas fractions are fractions of the picture. One thread.
class Surface {
public:
    Surface(std::uint32_t width, std::uint32_t height);

    /// A new size, transparent black, without clip. Texts and grids follow at their next draw.
    void resize(std::uint32_t width, std::uint32_t height);

    /// To be called once a frame when the application's picture is complete and before anything of the
    /// overlay is drawn: keeps the picture for the thumbnails, if there are any.
    void beginOverlay();

    /// Canvas fractions and a translation in clip-space units to pixels. The canvas spans 2 clip-space
    /// units, whose y points up as in clip space: a translation of (0.1, 0.1) moves by a twentieth of the
    /// canvas to the right and a twentieth upwards.
    Box toPixels(const glm::vec2& position, const glm::vec2& size, const glm::vec3& translation) const;

    /// Limits drawing to a rectangle (canvas fractions), at the nearest whole pixels.
    void setClip(const glm::vec2& position, const glm::vec2& size);
    void clearClip();
    const PixelRect& clip() const { return mClip; }

    /// Height divided by width; 1 for an empty picture.
    float aspectRatio() const;

    /// Width in pixels of the lines of graphs and grids: one canvas unit, but at least a pixel.
    float lineWidth() const;

    Image mImage;                   ///< drawn on; the application may write to it between frames
    Image mBackground;              ///< the picture as beginOverlay() found it
    bool mKeepsBackground = false;  ///< whether anybody looks at mBackground
    Rasterizer mRasterizer;

private:
    PixelRect mClip;
};

}  // namespace software
