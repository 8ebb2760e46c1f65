#pragma once

#include "raster/Geometry.h"
#include "raster/SurfaceShape.h"
#include "software/Image.h"
#include "software/Rasterizer.h"

#include <cstdint>
#include <glm/vec2.hpp>

namespace software {

/// The picture that the overlay is drawn on: the application's, of any size, landscape or portrait. One
/// thread.
class Surface {
public:
    Surface(std::uint32_t width, std::uint32_t height);

    /// Sets a new size, transparent black, without a clip. Texts and grids adapt at their next draw.
    void resize(std::uint32_t width, std::uint32_t height);

    /// Call it once a frame, when the application's picture is complete and before drawing the overlay: keeps
    /// the picture for the thumbnails, if there are any.
    void beginOverlay();

    /// The surface's size, and the conversions from canvas fractions.
    const raster::SurfaceShape& shape() const { return mShape; }

    /// Limits drawing to a rectangle in canvas fractions, rounded to whole pixels.
    void setClip(const glm::vec2& position, const glm::vec2& size);
    void clearClip();
    const raster::PixelRect& clip() const { return mClip; }

    Image mImage;                   ///< the application may write to it between frames
    Image mBackground;              ///< the picture at beginOverlay()
    bool mKeepsBackground = false;  ///< whether a thumbnail needs mBackground
    Rasterizer mRasterizer;

private:
    raster::SurfaceShape mShape;
    raster::PixelRect mClip;
};

}  // namespace software
