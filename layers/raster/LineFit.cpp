#include "raster/LineFit.h"

#include "gui/GlyphAtlas.h"

#include <algorithm>
#include <cmath>

namespace raster {

namespace {

/// Round letters reach beyond straight ones by up to about a fortieth of the line.
constexpr float OVERSHOOT = 0.05F;

/// Capitals are rounded up from a little below half a pixel, which keeps digits readable in small lines.
constexpr float TALLER = 0.6F;

float topOf(const gui::Glyph& glyph) {
    return glyph.mTransform[3][1] - glyph.mTransform[1][1];
}
float bottomOf(const gui::Glyph& glyph) {
    return glyph.mTransform[3][1] + glyph.mTransform[1][1];
}

float snap(float position) {
    return std::round(position * GLYPH_STEPS) / GLYPH_STEPS;
}

/// Maps line units to pixel rows: the base line and the tops go to whole rows, what is between them is scaled
/// in proportion, and what is beyond them keeps the line's own scale.
class RowMap {
public:
    RowMap(const FontHeights& font, float scale, float offset) : mFont(font), mScale(scale) {
        mBase = std::round(font.mBase * scale + offset);
        mSmall = mBase - std::max(1.0F, std::round((font.mBase - font.mSmall) * scale));
        mCapitals = mBase - std::max(1.0F, std::floor((font.mBase - font.mCapitals) * scale + TALLER));
    }

    float operator()(float y) const {
        if (std::fabs(y - mFont.mBase) <= mFont.mTolerance) {
            return mBase;
        }
        if (std::fabs(y - mFont.mSmall) <= mFont.mTolerance) {
            return mSmall;
        }
        if (std::fabs(y - mFont.mCapitals) <= mFont.mTolerance) {
            return mCapitals;
        }
        if (y > mFont.mBase) {
            return mBase + (y - mFont.mBase) * mScale;
        }
        if (y < mFont.mCapitals) {
            return mCapitals + (y - mFont.mCapitals) * mScale;
        }
        return mBase + (y - mFont.mBase) * (mCapitals - mBase) / (mFont.mCapitals - mFont.mBase);
    }

private:
    const FontHeights& mFont;
    float mScale;
    float mBase;
    float mSmall;
    float mCapitals;
};

}  // namespace

FontHeights measureFont(const gui::GlyphAtlas& atlas) {
    FontHeights heights;
    const auto capital = atlas.mGlyphs.find('H');
    const auto small = atlas.mGlyphs.find('x');
    if (capital != atlas.mGlyphs.end() && small != atlas.mGlyphs.end()) {
        heights.mCapitals = topOf(*capital->second);
        heights.mSmall = topOf(*small->second);
        heights.mBase = bottomOf(*capital->second);
        heights.mTolerance = OVERSHOOT;
        heights.mKnown = heights.mCapitals < heights.mSmall && heights.mSmall < heights.mBase;
    }
    return heights;
}

Box fitGlyph(const FontHeights& font, const gui::Glyph& glyph, const glm::mat4& transform) {
    Box box{transform[3][0] - transform[0][0], transform[3][1] - transform[1][1],
            transform[3][0] + transform[0][0], transform[3][1] + transform[1][1]};
    // The glyph's place in its line and on the surface gives the line's own scale and place.
    const float scale = transform[1][1] / glyph.mTransform[1][1];
    const float offset = transform[3][1] - glyph.mTransform[3][1] * scale;
    if (font.mKnown && std::isfinite(scale) && std::isfinite(offset) && scale > 0.0F) {
        const RowMap map(font, scale, offset);
        box.mTop = map(topOf(glyph));
        box.mBottom = map(bottomOf(glyph));
    }
    return {snap(box.mLeft), snap(box.mTop), snap(box.mRight), snap(box.mBottom)};
}

}  // namespace raster
