#include "software/Surface.h"

namespace software {

Surface::Surface(std::uint32_t width, std::uint32_t height) : mImage(width, height) {
    clearClip();
}

void Surface::resize(std::uint32_t width, std::uint32_t height) {
    mImage.resize(width, height);
    clearClip();
}

void Surface::beginOverlay() {
    if (mKeepsBackground) {
        mBackground = mImage;
    }
}

raster::SurfaceShape Surface::shape() const {
    return {mImage.mWidth, mImage.mHeight};
}

void Surface::setClip(const glm::vec2& position, const glm::vec2& size) {
    mClip = shape().toWholePixels(position, size);
}

void Surface::clearClip() {
    mClip = shape().all();
}

}  // namespace software
