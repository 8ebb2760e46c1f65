#include "vulkan/draw/Upright.h"

namespace vulkan {

Upright::Upright(VkExtent2D image, VkSurfaceTransformFlagBitsKHR transform) : size(image) {
    const auto width = static_cast<float>(image.width);
    const auto height = static_cast<float>(image.height);
    switch (transform) {
        case VK_SURFACE_TRANSFORM_ROTATE_90_BIT_KHR:
            size = {image.height, image.width};
            toImage = {{0.0F, -1.0F, 1.0F, 0.0F}, {width, 0.0F}};
            break;
        case VK_SURFACE_TRANSFORM_ROTATE_180_BIT_KHR:
            toImage = {{-1.0F, 0.0F, 0.0F, -1.0F}, {width, height}};
            break;
        case VK_SURFACE_TRANSFORM_ROTATE_270_BIT_KHR:
            size = {image.height, image.width};
            toImage = {{0.0F, 1.0F, -1.0F, 0.0F}, {0.0F, height}};
            break;
        default:  // mirrored screens are not known to exist
            break;
    }
}

}  // namespace vulkan
