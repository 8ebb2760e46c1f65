#include "raster/GlyphScaler.h"

#include "gui/GlyphAtlas.h"

#include <cmath>

namespace raster {

TexelRect texelsOf(const gui::Glyph& glyph, const gui::GlyphAtlas& atlas) {
    const auto width = static_cast<int>(atlas.mBitmapWidth);
    const auto height = static_cast<int>(atlas.mBitmapHeight);
    const glm::vec2& from = glyph.mQuad[0].mTexCoord;
    const glm::vec2& to = glyph.mQuad[3].mTexCoord;
    const auto texel = [](float fraction, int size) {
        return toInt(std::round(fraction * static_cast<float>(size)), 0, size);
    };
    const int left = texel(from.x, width);
    const int top = texel(from.y, height);
    TexelRect texels;
    texels.width = texel(to.x, width) - left;
    texels.height = texel(to.y, height) - top;
    texels.stride = atlas.mBitmapWidth;
    if (texels.width > 0 && texels.height > 0) {
        texels.first = atlas.mBitmap + static_cast<std::size_t>(top) * texels.stride + left;
    }
    return texels;
}

bool GlyphScaler::prepare(const TexelRect& texels, const Box& box, const PixelRect& limits) {
    mTexels = texels;
    return mColumns.prepare(box.left, box.right, texels.width, limits.left, limits.right) &&
           mRows.prepare(box.top, box.bottom, texels.height, limits.top, limits.bottom);
}

const float* GlyphScaler::row(int y) {
    const auto width = static_cast<std::size_t>(mTexels.width);
    const AxisFilter::Taps& rows = mRows.taps(y);
    const float* rowWeights = mRows.weights(rows);
    mSums.assign(width, 0.0F);
    for (std::size_t j = 0; j < rows.count; ++j) {
        const std::uint8_t* source = mTexels.first + (rows.first + j) * mTexels.stride;
        for (std::size_t i = 0; i < width; ++i) {
            mSums[i] += rowWeights[j] * static_cast<float>(source[i]);
        }
    }
    mCoverage.clear();
    for (int x = mColumns.first(); x < mColumns.end(); ++x) {
        const AxisFilter::Taps& columns = mColumns.taps(x);
        const float* columnWeights = mColumns.weights(columns);
        float sum = 0.0F;
        for (std::size_t i = 0; i < columns.count; ++i) {
            sum += columnWeights[i] * mSums[columns.first + i];
        }
        mCoverage.push_back(sum);
    }
    return mCoverage.data();
}

}  // namespace raster
