#include "raster/OutlinedGlyph.h"

#include <algorithm>

namespace raster {

namespace {

/// Stems of small letters cover hardly a pixel fully. They and their outline are to be as dense as any: in
/// the smallest lines stems cover about 0.8 of their pixels.
constexpr float INK_GAIN = 1.25F;
constexpr float OUTLINE_GAIN = 1.25F;

}  // namespace

bool OutlinedGlyph::prepare(const TexelRect& texels, const Box& box, const PixelRect& limits) {
    const auto grow = [](const PixelRect& rect) {
        return PixelRect{rect.left - 1, rect.top - 1, rect.right + 1, rect.bottom + 1};
    };
    if (limits.isEmpty() || !mScaler.prepare(texels, box, grow(limits))) {
        return false;
    }
    const PixelRect touched = mScaler.pixels();
    const PixelRect all = grow(touched);
    mPixels = intersect(all, limits);
    mLeft = all.left;
    mTop = all.top;
    mStride = static_cast<std::size_t>(all.width());
    const std::size_t count = mStride * static_cast<std::size_t>(all.height());
    mInk.assign(count, 0.0F);
    for (int y = touched.top; y < touched.bottom; ++y) {
        const float* const coverage = mScaler.row(y);
        float* const ink = mInk.data() + static_cast<std::size_t>(y - mTop) * mStride + 1;
        std::transform(coverage, coverage + touched.width(), ink,
                       [](float value) { return std::min(value * (INK_GAIN / 255.0F), 1.0F); });
    }
    // Nothing is touched in the first and last row and column, so that the rows' ends do not meet.
    mWidened = mInk;
    for (std::size_t i = 1; i + 1 < count; ++i) {
        mWidened[i] = std::max({mInk[i - 1], mInk[i], mInk[i + 1]});
    }
    mOutline.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const float above = i >= mStride ? mWidened[i - mStride] : 0.0F;
        const float below = i + mStride < count ? mWidened[i + mStride] : 0.0F;
        mOutline[i] = std::min(OUTLINE_GAIN * std::max({above, mWidened[i], below}), 1.0F);
    }
    return !mPixels.isEmpty();
}

}  // namespace raster
