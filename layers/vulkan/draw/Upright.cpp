#include "vulkan/draw/Upright.h"

namespace vulkan {

Upright::Upright(VkExtent2D image, VkSurfaceTransformFlagBitsKHR transform) : size(image) {
    const auto width = static_cast<float>(image.width);
    const auto height = static_cast<float>(image.height);
    switch (transform) {
        case VK_SURFACE_TRANSFORM_ROTATE_90_BIT_KHR:
            toImage = {{0.0F, -1.0F, 1.0F, 0.0F}, {width, 0.0F}};
            break;
        case VK_SURFACE_TRANSFORM_ROTATE_180_BIT_KHR:
            toImage = {{-1.0F, 0.0F, 0.0F, -1.0F}, {width, height}};
            break;
        case VK_SURFACE_TRANSFORM_ROTATE_270_BIT_KHR:
            toImage = {{0.0F, 1.0F, -1.0F, 0.0F}, {0.0F, height}};
            break;
        case VK_SURFACE_TRANSFORM_HORIZONTAL_MIRROR_BIT_KHR:
            toImage = {{-1.0F, 0.0F, 0.0F, 1.0F}, {width, 0.0F}};
            break;
        case VK_SURFACE_TRANSFORM_HORIZONTAL_MIRROR_ROTATE_90_BIT_KHR:
            toImage = {{0.0F, -1.0F, -1.0F, 0.0F}, {width, height}};
            break;
        case VK_SURFACE_TRANSFORM_HORIZONTAL_MIRROR_ROTATE_180_BIT_KHR:
            toImage = {{1.0F, 0.0F, 0.0F, -1.0F}, {0.0F, height}};
            break;
        case VK_SURFACE_TRANSFORM_HORIZONTAL_MIRROR_ROTATE_270_BIT_KHR:
            toImage = {{0.0F, 1.0F, 1.0F, 0.0F}, {0.0F, 0.0F}};
            break;
        default:
            break;
    }
    if (toImage.axes.x == 0.0F) {
        size = {image.height, image.width};
    }
}

}  // namespace vulkan
