#include "drawlist/MeshPrimitive.h"

#include "raster/GridLine.h"

#include <algorithm>
#include <cstring>

namespace drawlist {

void MeshPrimitive::draw() {
    bool isSame = mRetained.begin(mList, *this, mColor);
    isSame = isSame && mVertices.size() == mLastVertices.size() &&
             (mVertices.empty() || std::memcmp(mVertices.data(), mLastVertices.data(),
                                               mVertices.size() * sizeof(gui::Vertex)) == 0);
    if (isSame) {
        mRetained.repeat(mList.batch);
        return;
    }
    mLastVertices.assign(mVertices.begin(), mVertices.end());
    drawVertices();
}

void MeshPrimitive::drawVertices() {
    const raster::MeshPlacement place = raster::placeMesh(*this, mTopology == scene::Topology::LINE_STRIP,
                                                          mList.shape, mList.batch.clip(), mPoints);
    const Paint paint(mColor);
    if (mTopology == scene::Topology::LINES) {
        sortLines(place);
    }
    const bool isSolid = mTopology != scene::Topology::LINE_STRIP && mSlanted.empty();
    if (isSolid) {
        mList.batch.beginSolid(place.clip);
    } else {
        mList.batch.beginShape();
    }
    switch (mTopology) {
        case scene::Topology::TRIANGLE_STRIP:
            mFill.draw(mList.batch, mPoints.data(), mPoints.size(), paint, place.clip);
            break;
        case scene::Topology::LINE_STRIP:
            mCurve.draw(mList.batch, mPoints.data(), mPoints.size(), place.lineWidth, StrokePaint(mColor),
                        place.clip);
            break;
        case scene::Topology::LINES:
            drawLines(place, paint);
            break;
        case scene::Topology::BARS:
            for (std::size_t i = 1; i < mPoints.size(); i += 2) {
                mList.batch.addPixels(raster::nearestPixels(mPoints[i - 1], mPoints[i], place.clip), paint);
            }
            break;
    }
    mRetained.keep(mList.batch.endShape(place.clip), isSolid);
}

void MeshPrimitive::sortLines(const raster::MeshPlacement& place) {
    mLevel.clear();
    mUpright.clear();
    mSlanted.clear();
    for (std::size_t i = 1; i < mPoints.size(); i += 2) {
        raster::Box box;
        if (!raster::alignLine(mPoints[i - 1], mPoints[i], place.lineWidth, place.frame, box)) {
            mSlanted.push_back(i - 1);
        } else if (box.right - box.left > box.bottom - box.top) {
            mLevel.push_back(box);
        } else {
            mUpright.push_back(box);
        }
    }
}

void MeshPrimitive::drawLines(const raster::MeshPlacement& place, const Paint& paint) {
    for (const std::size_t line : mSlanted) {
        mCurve.draw(mList.batch, mPoints.data() + line, 2, place.lineWidth, StrokePaint(paint), place.clip);
    }
    for (const raster::Box& line : mLevel) {
        mList.batch.addRect(line, paint, place.clip);
    }
    // Where lines cross, the pixels are covered once: upright ones leave out what the level ones have.
    std::sort(mLevel.begin(), mLevel.end(),
              [](const raster::Box& a, const raster::Box& b) { return a.top < b.top; });
    for (const raster::Box& line : mUpright) {
        raster::Box piece = line;
        for (const raster::Box& level : mLevel) {
            const bool isCrossing = level.left < line.right && level.right > line.left;
            if (isCrossing && level.top < line.bottom && level.bottom > piece.top) {
                piece.bottom = level.top;
                mList.batch.addRect(piece, paint, place.clip);
                piece.top = level.bottom;
            }
        }
        piece.bottom = line.bottom;
        mList.batch.addRect(piece, paint, place.clip);
    }
}

}  // namespace drawlist
