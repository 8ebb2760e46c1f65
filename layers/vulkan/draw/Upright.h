#pragma once

#include "vulkan/draw/Placing.h"

#include <vulkan/vulkan.h>

namespace vulkan {

/// Where upright pixels are in an image. A program may turn or mirror its picture itself, as the screen of a
/// device that is held otherwise wants it; the overlay is laid out upright and turned with it.
struct Upright {
    Upright(VkExtent2D image, VkSurfaceTransformFlagBitsKHR transform);

    VkExtent2D size;  ///< what is seen, in pixels
    Placing toImage;  ///< from upright pixels
};

}  // namespace vulkan
