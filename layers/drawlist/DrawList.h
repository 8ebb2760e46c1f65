#pragma once

#include <array>

#include "drawlist/Batch.h"
#include "drawlist/GlyphCache.h"
#include "drawlist/PictureTimer.h"
#include "raster/SurfaceShape.h"

namespace drawlist {

/// One draw call: triangles that use the glyph texture, or the application's picture.
struct Draw {
    Batch::Range vertices;  ///< may be empty
    bool isPicture = false;
};

/// Everything that a graphics API's layer needs to show the overlay on one surface; primitives write to it.
/// Blend with source alpha and one minus source alpha. The glyph texture has two channels, of 8 bits each:
/// ink and coverage. A pixel is the vertices' colour, with its red, green and blue times the first channel
/// and its alpha times the second; the share that is not ink stays black, which is the outline.
struct DrawList {
    raster::SurfaceShape shape;
    bool isSrgb = false;  ///< the surface stores sRGB
    Batch batch;
    GlyphCache glyphs;
    PictureTimer pictureTimer;
    unsigned int drawing = 0;  ///< the drawing's number
    bool isDrawn = false;      ///< the batch has a complete drawing, which can be shown again

    void setSize(int width, int height);

    /// The API's copies are gone, so the next drawing is a new one.
    void forget();

    /// Begins a new drawing.
    void begin();

    /// The draw calls, in this order.
    std::array<Draw, 3> draws() const;
};

}  // namespace drawlist
