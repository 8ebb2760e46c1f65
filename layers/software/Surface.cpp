#include "software/Surface.h"

#include <algorithm>
#include <cmath>

namespace software {

namespace {

/// Canvas units along the canvas's shorter side.
constexpr float CANVAS_SHORT_SIDE = 360.0F;

}  // namespace

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

Box Surface::toPixels(const glm::vec2& position, const glm::vec2& size, const glm::vec3& translation) const {
    const auto width = static_cast<float>(mImage.mWidth);
    const auto height = static_cast<float>(mImage.mHeight);
    const float left = (position.x + 0.5F * translation.x) * width;
    const float top = (position.y - 0.5F * translation.y) * height;
    return {left, top, left + size.x * width, top + size.y * height};
}

void Surface::setClip(const glm::vec2& position, const glm::vec2& size) {
    const Box box = toPixels(position, size, glm::vec3(0.0F));
    clearClip();
    mClip = {toInt(std::round(box.mLeft), 0, mClip.mRight), toInt(std::round(box.mTop), 0, mClip.mBottom),
             toInt(std::round(box.mRight), 0, mClip.mRight),
             toInt(std::round(box.mBottom), 0, mClip.mBottom)};
}

void Surface::clearClip() {
    mClip = {0, 0, static_cast<int>(mImage.mWidth), static_cast<int>(mImage.mHeight)};
}

float Surface::aspectRatio() const {
    if (mImage.mWidth == 0 || mImage.mHeight == 0) {
        return 1.0F;
    }
    return static_cast<float>(mImage.mHeight) / static_cast<float>(mImage.mWidth);
}

float Surface::lineWidth() const {
    const auto shorter = static_cast<float>(std::min(mImage.mWidth, mImage.mHeight));
    return std::max(1.0F, shorter / CANVAS_SHORT_SIDE);
}

}  // namespace software
