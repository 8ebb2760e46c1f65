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
    const std::uint8_t* mFirst = nullptr;  ///< top-left texel
    std::size_t mStride = 0;               ///< texels from one row to the next
    int mWidth = 0;
    int mHeight = 0;
};

/// The texels between the quad's first and last corner, cut to the bitmap.
TexelRect texelsOf(const gui::Glyph& glyph, const gui::GlyphAtlas& atlas);

/// A glyph's texels scaled into a box by area averaging; its neighbours in the bitmap never show. Keeps its
/// memory from use to use.
class GlyphScaler {
public:
    /// False when the box touches none of the pixels of `limits` or is not finite. The texels must stay as
    /// long as the scaler is asked for rows.
    bool prepare(const TexelRect& texels, const Box& box, const PixelRect& limits);

    /// The pixels that are touched.
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
