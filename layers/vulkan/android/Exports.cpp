// What Android's Vulkan loader asks a layer's file for, by its functions' names. It opens the file, asks for
// the layers in it, closes it, and opens it again for an instance. What the instance's layers and the
// device's are must be the same, byte by byte, or the layer is left out of devices.

#include "vulkan/entry/Hooks.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr VkLayerProperties OURS = {"VK_LAYER_KORDANIX_overlay", VK_MAKE_API_VERSION(0, 1, 3, 0), 1,
                                    "Kordanix performance overlay"};

VkResult enumerate(const VkLayerProperties* layer, std::uint32_t* count, VkLayerProperties* properties) {
    const std::uint32_t wanted = layer == nullptr ? 0 : 1;
    if (properties == nullptr) {
        *count = wanted;
        return VK_SUCCESS;
    }
    *count = std::min(*count, wanted);
    std::copy_n(layer, *count, properties);
    return *count < wanted ? VK_INCOMPLETE : VK_SUCCESS;
}

/// The layer has no extensions of its own.
VkResult enumerateNone(std::uint32_t* count) {
    *count = 0;
    return VK_SUCCESS;
}

bool isOurs(const char* layer) {
    return layer != nullptr && std::strcmp(layer, OURS.layerName) == 0;
}

}  // namespace

#define VULKAN_EXPORT extern "C" [[gnu::visibility("default")]] VKAPI_ATTR

VULKAN_EXPORT VkResult VKAPI_CALL vkEnumerateInstanceLayerProperties(std::uint32_t* count,
                                                                     VkLayerProperties* properties) {
    return enumerate(&OURS, count, properties);
}

VULKAN_EXPORT VkResult VKAPI_CALL vkEnumerateDeviceLayerProperties(VkPhysicalDevice /*device*/,
                                                                   std::uint32_t* count,
                                                                   VkLayerProperties* properties) {
    return enumerate(&OURS, count, properties);
}

VULKAN_EXPORT VkResult VKAPI_CALL vkEnumerateInstanceExtensionProperties(
    const char* layer, std::uint32_t* count, VkExtensionProperties* /*properties*/) {
    return isOurs(layer) ? enumerateNone(count) : VK_ERROR_LAYER_NOT_PRESENT;
}

VULKAN_EXPORT VkResult VKAPI_CALL vkEnumerateDeviceExtensionProperties(VkPhysicalDevice device,
                                                                       const char* layer,
                                                                       std::uint32_t* count,
                                                                       VkExtensionProperties* properties) {
    if (isOurs(layer)) {
        return enumerateNone(count);
    }
    const vulkan::Instance* const instance =
        device == VK_NULL_HANDLE ? nullptr : vulkan::instances().find(vulkan::keyOf(device));
    return instance == nullptr
               ? VK_ERROR_LAYER_NOT_PRESENT
               : instance->functions.EnumerateDeviceExtensionProperties(device, layer, count, properties);
}

VULKAN_EXPORT PFN_vkVoidFunction VKAPI_CALL vkGetDeviceProcAddr(VkDevice device, const char* name) {
    return vulkan::getDeviceProcAddr(device, name);
}

VULKAN_EXPORT PFN_vkVoidFunction VKAPI_CALL vkGetInstanceProcAddr(VkInstance instance, const char* name) {
    static const vulkan::Hook OWN[] = {
        {"vkGetInstanceProcAddr", vulkan::erase(vkGetInstanceProcAddr)},
        {"vkEnumerateInstanceLayerProperties", vulkan::erase(vkEnumerateInstanceLayerProperties)},
        {"vkEnumerateInstanceExtensionProperties", vulkan::erase(vkEnumerateInstanceExtensionProperties)},
        {"vkEnumerateDeviceLayerProperties", vulkan::erase(vkEnumerateDeviceLayerProperties)},
        {"vkEnumerateDeviceExtensionProperties", vulkan::erase(vkEnumerateDeviceExtensionProperties)}};
    const PFN_vkVoidFunction own = name == nullptr ? nullptr : vulkan::findHook(OWN, name);
    return own != nullptr ? own : vulkan::getInstanceProcAddr(instance, name);
}
