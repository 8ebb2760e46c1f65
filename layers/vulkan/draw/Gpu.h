#pragma once

#include "vulkan/api/Functions.h"

#include <cstdint>

namespace vulkan {

/// What drawing needs to know of a device of the application. Constant once made; any thread.
struct Gpu {
    VkDevice device = VK_NULL_HANDLE;
    VkPhysicalDevice physicalDevice = VK_NULL_HANDLE;
    const InstanceFunctions* instance = nullptr;
    DeviceFunctions vk;
    VkPhysicalDeviceMemoryProperties memory = {};
    bool isCalibrated = false;      ///< relates its time stamps to CLOCK_MONOTONIC
    bool hidesCalibration = false;  ///< it does so by our wish alone
    float timeStampPeriod = 0.0F;   ///< nanoseconds that a time stamp counts

    /// Makes a command buffer that this layer allocated one of the loader's objects.
    PFN_vkSetDeviceLoaderData setLoaderData = nullptr;

    /// Whether images of a format, in optimal tiling, have these features.
    bool has(VkFormat format, VkFormatFeatureFlags features) const {
        VkFormatProperties properties = {};
        instance->GetPhysicalDeviceFormatProperties(physicalDevice, format, &properties);
        return (properties.optimalTilingFeatures & features) == features;
    }
};

}  // namespace vulkan
