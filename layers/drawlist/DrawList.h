#pragma once

#include "drawlist/Batch.h"
#include "drawlist/GlyphCache.h"
#include "drawlist/PictureTimer.h"
#include "raster/SurfaceShape.h"

#include <array>

namespace drawlist {

/// One draw call: the vertices of a part of the batch, by their place in the buffer.
struct Draw {
    Batch::Part part = Batch::Part::REST;
    Batch::Range vertices;  ///< may be empty
};

/// Everything that a graphics API's layer needs to show the overlay on one surface; primitives write to it.
/// Blend with source alpha and one minus source alpha. The glyph texture has two channels, of 8 bits each:
/// ink and coverage. A pixel is the vertices' colour, with its red, green and blue times the first channel
/// and its alpha times the second; the share that is not ink stays black, which is the outline. The vertices
/// of Batch::Part::SOLID lie on a texel of ink: they may be drawn with the texture, or faster without it.
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

    /// Where the vertices of a part are in the buffer.
    Batch::Range rangeOf(Batch::Part part) const { return draws()[static_cast<std::size_t>(part)].vertices; }

    /// The draw calls, in this order.
    std::array<Draw, Batch::PARTS> draws() const;
};

}  // namespace drawlist
