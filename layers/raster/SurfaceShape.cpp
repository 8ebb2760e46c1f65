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
    const glm::vec2 pixels(width, height);
    const float left = (position.x + 0.5F * translation.x) * pixels.x;
    const float top = (position.y - 0.5F * translation.y) * pixels.y;
    return {left, top, left + size.x * pixels.x, top + size.y * pixels.y};
}

glm::mat4 SurfaceShape::localToPixels(const glm::vec2& position, const glm::vec2& size,
                                      const glm::vec3& translation) const {
    const Box box = toPixels(position, size, translation);
    glm::mat4 transform(1.0F);
    transform[0][0] = 0.5F * (box.right - box.left);
    transform[1][1] = 0.5F * (box.bottom - box.top);
    transform[3] = {0.5F * (box.left + box.right), 0.5F * (box.top + box.bottom), translation.z, 1.0F};
    return transform;
}

PixelRect SurfaceShape::toWholePixels(const glm::vec2& position, const glm::vec2& size) const {
    const Box box = toPixels(position, size, glm::vec3(0.0F));
    const PixelRect limits = all();
    return {toInt(std::round(box.left), 0, limits.right), toInt(std::round(box.top), 0, limits.bottom),
            toInt(std::round(box.right), 0, limits.right), toInt(std::round(box.bottom), 0, limits.bottom)};
}

float SurfaceShape::aspectRatio() const {
    if (width == 0 || height == 0) {
        return 1.0F;
    }
    return static_cast<float>(height) / static_cast<float>(width);
}

float SurfaceShape::lineWidth() const {
    const auto shorter = static_cast<float>(std::min(width, height));
    return std::max(1.0F, shorter / CANVAS_SHORT_SIDE);
}

}  // namespace raster
