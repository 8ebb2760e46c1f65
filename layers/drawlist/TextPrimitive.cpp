#include "drawlist/TextPrimitive.h"

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
    mRetained.start(mList.batch);
    TextDrawer::draw();
    mRetained.finish(mList.batch);
}

void TextPrimitive::drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                              char symbol) {
    const GlyphCache::Picture picture = mList.glyphs.find(symbol, glyph, glyphBox(glyph, transform));
    if (color != mPaintColor) {
        mPaintColor = color;
        mPaint = Paint(color);
    }
    mList.batch.addTexels(picture.mPixels, picture.mU, picture.mV, mPaint);
}

}  // namespace drawlist
