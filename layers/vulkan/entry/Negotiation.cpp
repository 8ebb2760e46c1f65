// What the desktop's loader asks the layer's file for.

#include "vulkan/entry/Hooks.h"

#include <vulkan/vk_layer.h>

extern "C" [[gnu::visibility("default")]] VKAPI_ATTR VkResult VKAPI_CALL
vkNegotiateLoaderLayerInterfaceVersion(VkNegotiateLayerInterface* negotiation) {
    constexpr std::uint32_t VERSION = 2;
    if (negotiation == nullptr || negotiation->sType != LAYER_NEGOTIATE_INTERFACE_STRUCT ||
        negotiation->loaderLayerInterfaceVersion < VERSION) {
        return VK_ERROR_INITIALIZATION_FAILED;
    }
    negotiation->loaderLayerInterfaceVersion = VERSION;
    negotiation->pfnGetInstanceProcAddr = vulkan::getInstanceProcAddr;
    negotiation->pfnGetDeviceProcAddr = vulkan::getDeviceProcAddr;
    negotiation->pfnGetPhysicalDeviceProcAddr = nullptr;
    return VK_SUCCESS;
}
