#include "opengl/draw/Primitives.h"

#include <algorithm>
#include <utility>

#include "gui/GlyphAtlas.h"
#include "opengl/draw/DrawTarget.h"
#include "raster/GridLine.h"
#include "raster/LineFit.h"
#include "raster/MeshPoints.h"

namespace opengl {

void GlRect::draw() {
    mTarget.batch.addRect(mTarget.shape.toPixels(mPosition, mSize, mTranslation), Ink(mColor));
}

void GlMesh::draw() {
    bool isSame = mKept.begin(mTarget, *this, mColor);
    isSame = isSame && mVertices.size() == mKeptVertices.size() &&
             std::equal(mVertices.begin(), mVertices.end(), mKeptVertices.begin(),
                        [](const gui::Vertex& a, const gui::Vertex& b) { return a.x == b.x && a.y == b.y; });
    if (isSame) {
        mKept.repeat(mTarget.batch);
        return;
    }
    mKeptVertices.assign(mVertices.begin(), mVertices.end());
    mKept.start(mTarget.batch);
    drawVertices();
    mKept.finish(mTarget.batch);
}

void GlMesh::drawVertices() {
    const raster::Box frame = mTarget.shape.toPixels(mPosition, mSize, mTranslation);
    const float width = mTarget.shape.lineWidth();
    const float inset = mTopology == scene::Topology::LINE_STRIP ? 0.5F * width : 0.0F;
    raster::placeVertices(mVertices, frame, inset, mPoints);
    const raster::PixelRect clip = raster::touchedPixels(frame, mTarget.batch.clip());
    const Ink ink(mColor);
    switch (mTopology) {
        case scene::Topology::TRIANGLE_STRIP:
            mFill.draw(mTarget.batch, mPoints.data(), mPoints.size(), ink, clip);
            break;
        case scene::Topology::LINE_STRIP:
            mCurve.draw(mTarget.batch, mPoints.data(), mPoints.size(), width, ink, clip);
            break;
        case scene::Topology::LINES:
            drawLines(frame, width, ink, clip);
            break;
    }
}

void GlMesh::drawLines(const raster::Box& frame, float width, const Ink& ink, const raster::PixelRect& clip) {
    mLevel.clear();
    mUpright.clear();
    for (std::size_t i = 1; i < mPoints.size(); i += 2) {
        raster::Box box;
        if (!raster::alignLine(mPoints[i - 1], mPoints[i], width, frame, box)) {
            mCurve.draw(mTarget.batch, mPoints.data() + i - 1, 2, width, ink, clip);
        } else if (box.mRight - box.mLeft > box.mBottom - box.mTop) {
            mLevel.push_back(box);
        } else {
            mUpright.push_back(box);
        }
    }
    for (const raster::Box& line : mLevel) {
        mTarget.batch.addRect(line, ink, clip);
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
                mTarget.batch.addRect(piece, ink, clip);
                piece.mTop = level.mBottom;
            }
        }
        piece.mBottom = line.mBottom;
        mTarget.batch.addRect(piece, ink, clip);
    }
}

GlGrid::GlGrid(const DrawTarget& target, std::unique_ptr<drawer::MeshDrawer> lines)
    : GridDrawer(std::move(lines)), mTarget(target) {}

float GlGrid::getAspectRatio() {
    return mTarget.shape.aspectRatio();
}

void GlText::draw() {
    const bool isSame = mKept.begin(mTarget, *this, mTextColor) && mText == mKeptText &&
                        mTextSizeHint == mKeptSizeHint && mTextEllipsize == mKeptEllipsize &&
                        mTextGravity == mKeptGravity;
    if (isSame) {
        mKept.repeat(mTarget.batch);
        return;
    }
    mKeptText = mText;
    mKeptSizeHint = mTextSizeHint;
    mKeptEllipsize = mTextEllipsize;
    mKeptGravity = mTextGravity;
    mKept.start(mTarget.batch);
    TextDrawer::draw();
    mKept.finish(mTarget.batch);
}

void GlText::drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                       char symbol) {
    static const raster::FontHeights FONT = raster::measureFont(gui::GlyphAtlas::getGlyphAtlas());
    const GlyphCache::Picture picture =
        mTarget.glyphs.find(symbol, glyph, raster::fitGlyph(FONT, glyph, transform));
    if (color != mInkColor) {
        mInkColor = color;
        mInk = Ink(color);
    }
    mTarget.batch.addTexels(picture.mPixels, picture.mU, picture.mV, mInk);
}

glm::mat4 GlText::getTransform(const glm::vec2& size, const glm::vec2& position,
                               const glm::vec3& translation) {
    return mTarget.shape.localToPixels(position, size, translation);
}

float GlText::getAspectRatio() {
    return mTarget.shape.aspectRatio();
}

float GlText::getScreenHeight() {
    return static_cast<float>(mTarget.shape.mHeight);
}

void GlThumbnail::draw() {
    mTarget.batch.addPicture(mTarget.shape.toPixels(mPosition, mSize, mTranslation));
}

}  // namespace opengl
