#include "software/MeshPrimitive.h"

#include "raster/MeshPoints.h"
#include "software/Surface.h"

namespace software {

MeshPrimitive::MeshPrimitive(Surface& surface, scene::Topology topology)
    : mSurface(surface), mTopology(topology) {}

void MeshPrimitive::draw() {
    const raster::Box frame = mSurface.shape().toPixels(mPosition, mSize, mTranslation);
    const float width = mSurface.shape().lineWidth();
    const float inset = mTopology == scene::Topology::LINE_STRIP ? 0.5F * width : 0.0F;
    raster::placeVertices(mVertices, frame, inset, mPoints);

    Image& image = mSurface.mImage;
    Rasterizer& rasterizer = mSurface.mRasterizer;
    const raster::PixelRect clip = raster::touchedPixels(frame, mSurface.clip());
    const Paint paint = makePaint(mColor);
    switch (mTopology) {
        case scene::Topology::TRIANGLE_STRIP:
            rasterizer.fillStrip(image, clip, mPoints.data(), mPoints.size(), paint);
            break;
        case scene::Topology::LINE_STRIP:
            rasterizer.strokeLine(image, clip, mPoints.data(), mPoints.size(), width, paint);
            break;
        case scene::Topology::LINES:
            rasterizer.strokeSegments(image, clip, frame, mPoints.data(), mPoints.size(), width, paint);
            break;
    }
}

void MeshPrimitive::clear() {
    mVertices.clear();
}

}  // namespace software
