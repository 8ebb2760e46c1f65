#include "software/Surface.h"

namespace software {

Surface::Surface(std::uint32_t width, std::uint32_t height) {
    resize(width, height);
}

void Surface::resize(std::uint32_t width, std::uint32_t height) {
    mImage.resize(width, height);
    mShape = {mImage.mWidth, mImage.mHeight};
    clearClip();
}

void Surface::beginOverlay() {
    if (mKeepsBackground) {
        mBackground = mImage;
    }
}

void Surface::setClip(const glm::vec2& position, const glm::vec2& size) {
    mClip = mShape.toWholePixels(position, size);
}

void Surface::clearClip() {
    mClip = mShape.all();
}

}  // namespace software
