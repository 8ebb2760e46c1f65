#include "vulkan/draw/ColorEncoding.h"

namespace vulkan {

bool isSrgbFormat(VkFormat format) {
    switch (format) {
        case VK_FORMAT_R8G8B8_SRGB:
        case VK_FORMAT_B8G8R8_SRGB:
        case VK_FORMAT_R8G8B8A8_SRGB:
        case VK_FORMAT_B8G8R8A8_SRGB:
        case VK_FORMAT_A8B8G8R8_SRGB_PACK32:
            return true;
        default:
            return false;
    }
}

ColorEncoding encodingOf(VkFormat format, VkColorSpaceKHR space) {
    switch (space) {
        case VK_COLOR_SPACE_EXTENDED_SRGB_LINEAR_EXT:
            return ColorEncoding::SCRGB;
        case VK_COLOR_SPACE_HDR10_ST2084_EXT:
            return ColorEncoding::PQ;
        case VK_COLOR_SPACE_DISPLAY_P3_LINEAR_EXT:
        case VK_COLOR_SPACE_BT709_LINEAR_EXT:
        case VK_COLOR_SPACE_BT2020_LINEAR_EXT:
            return ColorEncoding::LINEAR;
        default:
            return isSrgbFormat(format) ? ColorEncoding::LINEAR : ColorEncoding::AS_SRGB;
    }
}

}  // namespace vulkan
