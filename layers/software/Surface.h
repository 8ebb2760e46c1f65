#pragma once

#include "raster/Geometry.h"
#include "raster/SurfaceShape.h"
#include "software/Image.h"
#include "software/Rasterizer.h"

#include <glm/vec2.hpp>

#include <cstdint>

namespace software {

/// What the overlay is drawn on: the application's picture, of any size, landscape or portrait. One thread.
class Surface {
public:
    Surface(std::uint32_t width, std::uint32_t height);

    /// A new size, transparent black, without clip. Texts and grids follow at their next draw.
    void resize(std::uint32_t width, std::uint32_t height);

    /// To be called once a frame when the application's picture is complete and before anything of the
    /// overlay is drawn: keeps the picture for the thumbnails, if there are any.
    void beginOverlay();

    /// Its size, and where canvas fractions fall on it.
    const raster::SurfaceShape& shape() const { return mShape; }

    /// Limits drawing to a rectangle (canvas fractions), at the nearest whole pixels.
    void setClip(const glm::vec2& position, const glm::vec2& size);
    void clearClip();
    const raster::PixelRect& clip() const { return mClip; }

    Image mImage;                   ///< drawn on; the application may write to it between frames
    Image mBackground;              ///< the picture as beginOverlay() found it
    bool mKeepsBackground = false;  ///< whether anybody looks at mBackground
    Rasterizer mRasterizer;

private:
    raster::SurfaceShape mShape;
    raster::PixelRect mClip;
};

}  // namespace software
