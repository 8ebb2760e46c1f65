#pragma once

#include <array>

#include "drawlist/Batch.h"
#include "drawlist/GlyphCache.h"
#include "drawlist/PictureTimer.h"
#include "raster/SurfaceShape.h"

namespace drawlist {

/// One draw call: triangles that read the glyph texture, or the application's picture.
struct Draw {
    Batch::Range vertices;  ///< may be none
    bool isPicture = false;
};

/// All that a layer of a graphics API shows of one surface's overlay, and what its primitives draw on.
/// Blending is source alpha over one minus source alpha.
struct DrawList {
    raster::SurfaceShape shape;
    bool isSrgb = false;  ///< the surface stores sRGB
    Batch batch;
    GlyphCache glyphs;
    PictureTimer pictureTimer;
    unsigned int drawing = 0;  ///< counts the drawings
    bool isDrawn = false;      ///< the batch holds a whole drawing that can be shown again

    void setSize(int width, int height);

    /// What an API had of it is gone: the next drawing is a new one.
    void forget();

    /// Begins a new drawing.
    void begin();

    /// What is to be drawn, in this order.
    std::array<Draw, 3> draws() const;
};

}  // namespace drawlist
