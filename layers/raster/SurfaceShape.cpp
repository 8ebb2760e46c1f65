#include "raster/SurfaceShape.h"

#include <algorithm>
#include <cmath>

namespace raster {

namespace {

/// Canvas units along the canvas's shorter side.
constexpr float CANVAS_SHORT_SIDE = 360.0F;

}  // namespace

Box SurfaceShape::toPixels(const glm::vec2& position, const glm::vec2& size,
                           const glm::vec3& translation) const {
    const auto width = static_cast<float>(mWidth);
    const auto height = static_cast<float>(mHeight);
    const float left = (position.x + 0.5F * translation.x) * width;
    const float top = (position.y - 0.5F * translation.y) * height;
    return {left, top, left + size.x * width, top + size.y * height};
}

glm::mat4 SurfaceShape::localToPixels(const glm::vec2& position, const glm::vec2& size,
                                      const glm::vec3& translation) const {
    const Box box = toPixels(position, size, translation);
    glm::mat4 transform(1.0F);
    transform[0][0] = 0.5F * (box.mRight - box.mLeft);
    transform[1][1] = 0.5F * (box.mBottom - box.mTop);
    transform[3] = {0.5F * (box.mLeft + box.mRight), 0.5F * (box.mTop + box.mBottom), translation.z, 1.0F};
    return transform;
}

PixelRect SurfaceShape::toWholePixels(const glm::vec2& position, const glm::vec2& size) const {
    const Box box = toPixels(position, size, glm::vec3(0.0F));
    const PixelRect limits = all();
    return {toInt(std::round(box.mLeft), 0, limits.mRight), toInt(std::round(box.mTop), 0, limits.mBottom),
            toInt(std::round(box.mRight), 0, limits.mRight),
            toInt(std::round(box.mBottom), 0, limits.mBottom)};
}

float SurfaceShape::aspectRatio() const {
    if (mWidth == 0 || mHeight == 0) {
        return 1.0F;
    }
    return static_cast<float>(mHeight) / static_cast<float>(mWidth);
}

float SurfaceShape::lineWidth() const {
    const auto shorter = static_cast<float>(std::min(mWidth, mHeight));
    return std::max(1.0F, shorter / CANVAS_SHORT_SIDE);
}

}  // namespace raster
