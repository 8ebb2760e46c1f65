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
        mBase = std::round(font.base * scale + offset);
        mSmall = mBase - std::max(1.0F, std::round((font.base - font.small) * scale));
        mCapitals = mBase - std::max(1.0F, std::floor((font.base - font.capitals) * scale + TALLER));
    }

    float operator()(float y) const {
        if (std::fabs(y - mFont.base) <= mFont.tolerance) {
            return mBase;
        }
        if (std::fabs(y - mFont.small) <= mFont.tolerance) {
            return mSmall;
        }
        if (std::fabs(y - mFont.capitals) <= mFont.tolerance) {
            return mCapitals;
        }
        if (y > mFont.base) {
            return mBase + (y - mFont.base) * mScale;
        }
        if (y < mFont.capitals) {
            return mCapitals + (y - mFont.capitals) * mScale;
        }
        return mBase + (y - mFont.base) * (mCapitals - mBase) / (mFont.capitals - mFont.base);
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
        heights.capitals = topOf(*capital->second);
        heights.small = topOf(*small->second);
        heights.base = bottomOf(*capital->second);
        heights.tolerance = OVERSHOOT;
        heights.known = heights.capitals < heights.small && heights.small < heights.base;
    }
    return heights;
}

Box fitGlyph(const FontHeights& font, const gui::Glyph& glyph, const glm::mat4& transform) {
    Box box{transform[3][0] - transform[0][0], transform[3][1] - transform[1][1],
            transform[3][0] + transform[0][0], transform[3][1] + transform[1][1]};
    // The glyph's place in its line and on the surface gives the line's own scale and place.
    const float scale = transform[1][1] / glyph.mTransform[1][1];
    const float offset = transform[3][1] - glyph.mTransform[3][1] * scale;
    if (font.known && std::isfinite(scale) && std::isfinite(offset) && scale > 0.0F) {
        const RowMap map(font, scale, offset);
        box.top = map(topOf(glyph));
        box.bottom = map(bottomOf(glyph));
    }
    return {snap(box.left), snap(box.top), snap(box.right), snap(box.bottom)};
}

}  // namespace raster
