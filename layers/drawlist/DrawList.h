#pragma once

#include "drawlist/Batch.h"
#include "drawlist/GlyphCache.h"
#include "raster/SurfaceShape.h"

namespace drawlist {

/// What the primitives of one surface draw on, and what the renderer shows: knows no OpenGL.
struct DrawList {
    raster::SurfaceShape shape;
    Batch batch;
    GlyphCache glyphs;
    unsigned int drawing = 0;  ///< counts the drawings
    bool isDrawn = false;      ///< the batch holds a whole drawing that can be shown again

    void setSize(int width, int height);

    /// The next drawing is a new one.
    void forget();

    /// Begins a new drawing.
    void begin();
};

}  // namespace drawlist
