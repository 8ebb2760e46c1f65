#include "vulkan/api/Functions.h"

namespace vulkan {

bool InstanceFunctions::load(VkInstance instance, PFN_vkGetInstanceProcAddr lookUp) {
    GetInstanceProcAddr = lookUp;
    bool isComplete = true;
#define VULKAN_OPTIONAL(name) name = reinterpret_cast<PFN_vk##name>(lookUp(instance, "vk" #name));
#define VULKAN_REQUIRED(name) VULKAN_OPTIONAL(name) isComplete = isComplete && name != nullptr;
    VULKAN_INSTANCE_FUNCTIONS(VULKAN_REQUIRED)
    VULKAN_OPTIONAL_INSTANCE_FUNCTIONS(VULKAN_OPTIONAL)
#undef VULKAN_REQUIRED
#undef VULKAN_OPTIONAL
    return isComplete;
}

bool DeviceFunctions::load(VkDevice device, PFN_vkGetDeviceProcAddr lookUp) {
    GetDeviceProcAddr = lookUp;
    bool isComplete = true;
#define VULKAN_OPTIONAL(name) name = reinterpret_cast<PFN_vk##name>(lookUp(device, "vk" #name));
#define VULKAN_REQUIRED(name) VULKAN_OPTIONAL(name) isComplete = isComplete && name != nullptr;
    VULKAN_DEVICE_FUNCTIONS(VULKAN_REQUIRED)
    VULKAN_OPTIONAL_DEVICE_FUNCTIONS(VULKAN_OPTIONAL)
#undef VULKAN_REQUIRED
#undef VULKAN_OPTIONAL
    return isComplete;
}

}  // namespace vulkan
