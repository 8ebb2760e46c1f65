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
    if (picture.mPixels.isEmpty()) {
        return;
    }
    const int left = firstColumn(picture.mPixels.mLeft + 1, picture.mPixels.mRight - 1);
    picture.mU += left - picture.mPixels.mLeft;
    picture.mPixels.mLeft = left;
    mBounds = raster::unite(mBounds, picture.mPixels);
    mList.batch.addTexels(picture.mPixels, picture.mU, picture.mV, mIsDark ? mOutline : mPaint);
    if (mIsDark) {
        const GlyphCache::Picture ink = mList.glyphs.find(symbol, glyph, box, Part::INK);
        mList.batch.addTexels(ink.mPixels, ink.mU, ink.mV, mPaint);
    }
}

}  // namespace drawlist
