#include "drawlist/TextPrimitive.h"

#include "raster/Outline.h"

namespace drawlist {

void TextPrimitive::draw() {
    const bool isSame = mRetained.begin(mList, *this, mTextColor) && mText == mLastText &&
                        mTextSizeHint == mLastSizeHint && mTextEllipsize == mLastEllipsize &&
                        mTextGravity == mLastGravity;
    if (isSame) {
        mRetained.repeat(mList.batch);
        return;
    }
    mLastText = mText;
    mLastSizeHint = mTextSizeHint;
    mLastEllipsize = mTextEllipsize;
    mLastGravity = mTextGravity;
    mBounds = {};
    mList.batch.beginShape();
    SurfaceText::draw();
    mRetained.keep(mList.batch.endShape(mBounds), false);
}

void TextPrimitive::drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                              char symbol) {
    if (color != mPaintColor) {
        mPaintColor = color;
        mPaint = Paint(color);
        mOutline = Paint(raster::outlineColor(color));
        mIsDark = raster::isDark(color);
    }
    const raster::Box box = glyphBox(glyph, transform);
    GlyphCache::Picture picture = mList.glyphs.find(symbol, glyph, box, mIsDark ? Part::OUTLINE : Part::BOTH);
    if (picture.pixels.isEmpty()) {
        return;
    }
    const int left = firstColumn(picture.pixels.left + 1, picture.pixels.right - 1);
    picture.u += left - picture.pixels.left;
    picture.pixels.left = left;
    mBounds = raster::unite(mBounds, picture.pixels);
    mList.batch.addTexels(picture.pixels, picture.u, picture.v, mIsDark ? mOutline : mPaint);
    if (mIsDark) {
        const GlyphCache::Picture ink = mList.glyphs.find(symbol, glyph, box, Part::INK);
        mList.batch.addTexels(ink.pixels, ink.u, ink.v, mPaint);
    }
}

}  // namespace drawlist
