#pragma once

#include "raster/AxisFilter.h"
#include "raster/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace gui {
struct Glyph;
class GlyphAtlas;
}  // namespace gui

namespace raster {

/// A rectangle of texels of an 8-bit coverage bitmap.
struct TexelRect {
    const std::uint8_t* first = nullptr;  ///< top-left texel
    std::size_t stride = 0;               ///< texels in a row of the bitmap
    int width = 0;
    int height = 0;
};

/// The texels between the quad's first and last corner, clipped to the bitmap.
TexelRect texelsOf(const gui::Glyph& glyph, const gui::GlyphAtlas& atlas);

/// Scales a glyph's texels into a box by area averaging, without its neighbours in the bitmap. Reuses its
/// memory.
class GlyphScaler {
public:
    /// False when the box touches none of the pixels of `limits` or is not finite. The texels must live as
    /// long as row() is called.
    bool prepare(const TexelRect& texels, const Box& box, const PixelRect& limits);

    /// The pixels that the box touches.
    PixelRect pixels() const { return {mColumns.first(), mRows.first(), mColumns.end(), mRows.end()}; }

    /// Coverage 0..255 of one of these rows, pixels().width() values, valid until the next call.
    const float* row(int y);

private:
    TexelRect mTexels;
    AxisFilter mColumns;
    AxisFilter mRows;
    std::vector<float> mSums;
    std::vector<float> mCoverage;
};

}  // namespace raster
