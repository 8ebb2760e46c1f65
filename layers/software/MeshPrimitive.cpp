#include "software/MeshPrimitive.h"

#include "raster/MeshPlacement.h"
#include "software/Surface.h"

namespace software {

MeshPrimitive::MeshPrimitive(Surface& surface, scene::Topology topology)
    : mSurface(surface), mTopology(topology) {}

void MeshPrimitive::draw() {
    const auto [frame, clip, width] = raster::placeMesh(*this, mTopology == scene::Topology::LINE_STRIP,
                                                        mSurface.shape(), mSurface.clip(), mPoints);
    Image& image = mSurface.mImage;
    Rasterizer& rasterizer = mSurface.mRasterizer;
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
        case scene::Topology::BARS:
            for (std::size_t i = 1; i < mPoints.size(); i += 2) {
                const raster::PixelRect bar = raster::nearestPixels(mPoints[i - 1], mPoints[i], clip);
                Rasterizer::fillRect(image, bar, raster::toBox(bar), paint);
            }
            break;
    }
}

void MeshPrimitive::clear() {
    mVertices.clear();
}

}  // namespace software
