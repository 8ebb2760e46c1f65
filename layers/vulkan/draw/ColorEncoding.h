#pragma once

#include <vulkan/vulkan.h>

#include <cstdint>

namespace vulkan {

/// What the values written to an image mean, as the fragment shader numbers it.
enum class ColorEncoding : std::uint32_t {
    AS_SRGB = 0,  ///< sRGB's own codes
    LINEAR = 1,   ///< light, which the format may turn into codes
    SCRGB = 2,    ///< light, 1.0 at 80 nits: white is shown at 203
    PQ = 3        ///< HDR10's codes, white at 203 nits
};

ColorEncoding encodingOf(VkFormat format, VkColorSpaceKHR space);

/// Whether the format turns light into sRGB's codes.
bool isSrgbFormat(VkFormat format);

}  // namespace vulkan
