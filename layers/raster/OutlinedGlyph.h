#pragma once

#include "raster/Geometry.h"
#include "raster/GlyphScaler.h"

#include <cstddef>
#include <vector>

namespace raster {

/// A glyph's texels scaled into a box, and the outline around them. Keeps its memory from use to use.
class OutlinedGlyph {
public:
    /// False when nothing of it lies within `limits` or the box is not finite.
    bool prepare(const TexelRect& texels, const Box& box, const PixelRect& limits);

    /// The pixels of both, within the limits.
    const PixelRect& pixels() const { return mPixels; }

    /// The columns that the glyph itself touches, end exclusive; of those out of reach of the limits not all.
    int inkLeft() const { return mLeft + 1; }
    int inkEnd() const { return mLeft + static_cast<int>(mStride) - 1; }

    /// Coverage 0..1 of one of these rows, pixels().width() values each.
    const float* ink(int y) const { return mInk.data() + at(y); }
    const float* outline(int y) const { return mOutline.data() + at(y); }

private:
    std::size_t at(int y) const {
        return static_cast<std::size_t>(y - mTop) * mStride + static_cast<std::size_t>(mPixels.left - mLeft);
    }

    GlyphScaler mScaler;
    PixelRect mPixels;
    int mLeft = 0;  ///< of the rows that are kept
    int mTop = 0;
    std::size_t mStride = 0;
    std::vector<float> mInk;
    std::vector<float> mWidened;  ///< in its rows
    std::vector<float> mOutline;
};

}  // namespace raster
