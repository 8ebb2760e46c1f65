#include "drawlist/Primitives.h"

#include <algorithm>
#include <utility>

#include "drawlist/DrawList.h"
#include "gui/GlyphAtlas.h"
#include "raster/GridLine.h"
#include "raster/LineFit.h"
#include "raster/MeshPoints.h"

namespace drawlist {

void RectPrimitive::draw() {
    mList.batch.addRect(mList.shape.toPixels(mPosition, mSize, mTranslation), Paint(mColor));
}

void MeshPrimitive::draw() {
    bool isSame = mRetained.begin(mList, *this, mColor);
    isSame = isSame && mVertices.size() == mLastVertices.size() &&
             std::equal(mVertices.begin(), mVertices.end(), mLastVertices.begin(),
                        [](const gui::Vertex& a, const gui::Vertex& b) { return a.x == b.x && a.y == b.y; });
    if (isSame) {
        mRetained.repeat(mList.batch);
        return;
    }
    mLastVertices.assign(mVertices.begin(), mVertices.end());
    mRetained.start(mList.batch);
    drawVertices();
    mRetained.finish(mList.batch);
}

void MeshPrimitive::drawVertices() {
    const raster::Box frame = mList.shape.toPixels(mPosition, mSize, mTranslation);
    const float width = mList.shape.lineWidth();
    const float inset = mTopology == scene::Topology::LINE_STRIP ? 0.5F * width : 0.0F;
    raster::placeVertices(mVertices, frame, inset, mPoints);
    const raster::PixelRect clip = raster::touchedPixels(frame, mList.batch.clip());
    const Paint paint(mColor);
    switch (mTopology) {
        case scene::Topology::TRIANGLE_STRIP:
            mFill.draw(mList.batch, mPoints.data(), mPoints.size(), paint, clip);
            break;
        case scene::Topology::LINE_STRIP:
            mCurve.draw(mList.batch, mPoints.data(), mPoints.size(), width, paint, clip);
            break;
        case scene::Topology::LINES:
            drawLines(frame, width, paint, clip);
            break;
    }
}

void MeshPrimitive::drawLines(const raster::Box& frame, float width, const Paint& paint,
                              const raster::PixelRect& clip) {
    mLevel.clear();
    mUpright.clear();
    for (std::size_t i = 1; i < mPoints.size(); i += 2) {
        raster::Box box;
        if (!raster::alignLine(mPoints[i - 1], mPoints[i], width, frame, box)) {
            mCurve.draw(mList.batch, mPoints.data() + i - 1, 2, width, paint, clip);
        } else if (box.mRight - box.mLeft > box.mBottom - box.mTop) {
            mLevel.push_back(box);
        } else {
            mUpright.push_back(box);
        }
    }
    for (const raster::Box& line : mLevel) {
        mList.batch.addRect(line, paint, clip);
    }
    // Where lines cross, the pixels are covered once: upright ones leave out what the level ones have.
    std::sort(mLevel.begin(), mLevel.end(),
              [](const raster::Box& a, const raster::Box& b) { return a.mTop < b.mTop; });
    for (const raster::Box& line : mUpright) {
        raster::Box piece = line;
        for (const raster::Box& level : mLevel) {
            const bool isCrossing = level.mLeft < line.mRight && level.mRight > line.mLeft;
            if (isCrossing && level.mTop < line.mBottom && level.mBottom > piece.mTop) {
                piece.mBottom = level.mTop;
                mList.batch.addRect(piece, paint, clip);
                piece.mTop = level.mBottom;
            }
        }
        piece.mBottom = line.mBottom;
        mList.batch.addRect(piece, paint, clip);
    }
}

GridPrimitive::GridPrimitive(const DrawList& list, std::unique_ptr<drawer::MeshDrawer> lines)
    : GridDrawer(std::move(lines)), mList(list) {}

float GridPrimitive::getAspectRatio() {
    return mList.shape.aspectRatio();
}

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
    static const raster::FontHeights FONT = raster::measureFont(gui::GlyphAtlas::getGlyphAtlas());
    const GlyphCache::Picture picture =
        mList.glyphs.find(symbol, glyph, raster::fitGlyph(FONT, glyph, transform));
    if (color != mPaintColor) {
        mPaintColor = color;
        mPaint = Paint(color);
    }
    mList.batch.addTexels(picture.mPixels, picture.mU, picture.mV, mPaint);
}

glm::mat4 TextPrimitive::getTransform(const glm::vec2& size, const glm::vec2& position,
                                      const glm::vec3& translation) {
    return mList.shape.localToPixels(position, size, translation);
}

float TextPrimitive::getAspectRatio() {
    return mList.shape.aspectRatio();
}

float TextPrimitive::getScreenHeight() {
    return static_cast<float>(mList.shape.mHeight);
}

void ThumbnailPrimitive::draw() {
    mList.batch.addPicture(mList.shape.toPixels(mPosition, mSize, mTranslation));
}

}  // namespace drawlist
