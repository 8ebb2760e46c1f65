#pragma once

#include "vulkan/draw/Gpu.h"
#include "vulkan/draw/Upright.h"

#include <cstdint>
#include <vector>

namespace vulkan {

/// A swapchain of the application, as far as drawing is concerned.
struct SwapchainImages {
    VkFormat format = VK_FORMAT_UNDEFINED;
    VkColorSpaceKHR colorSpace = VK_COLOR_SPACE_SRGB_NONLINEAR_KHR;
    VkExtent2D size = {0, 0};
    std::uint32_t layers = 1;
    bool isReadable = false;  ///< its images can be copied from
    std::vector<VkImage> images;
    VkSurfaceTransformFlagBitsKHR transform = VK_SURFACE_TRANSFORM_IDENTITY_BIT_KHR;  ///< of their content

    Upright upright() const { return {size, transform}; }
};

}  // namespace vulkan
