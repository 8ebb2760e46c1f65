#pragma once

#include "vulkan/entry/Device.h"
#include "vulkan/entry/DispatchMap.h"

#include <cstring>

/// How the functions that the layer puts between the application and its Vulkan find their objects.
/// Dispatchable handles begin with a pointer of the loader's, which the objects made from an instance, or
/// from a device, share: it tells whose a handle is.
namespace vulkan {

template <typename Handle>
void* keyOf(Handle handle) {
    return *reinterpret_cast<void**>(handle);
}

DispatchMap<Instance>& instances();
DispatchMap<Device>& devices();

struct Hook {
    const char* name;
    PFN_vkVoidFunction function;
};

template <typename Function>
PFN_vkVoidFunction erase(Function* function) {
    return reinterpret_cast<PFN_vkVoidFunction>(function);
}

template <typename Hooks>
PFN_vkVoidFunction findHook(const Hooks& hooks, const char* name) {
    for (const Hook& hook : hooks) {
        if (std::strcmp(hook.name, name) == 0) {
            return hook.function;
        }
    }
    return nullptr;
}

/// The look-ups that a program meets: our functions, and those below.
VKAPI_ATTR PFN_vkVoidFunction VKAPI_CALL getInstanceProcAddr(VkInstance instance, const char* name);
VKAPI_ATTR PFN_vkVoidFunction VKAPI_CALL getDeviceProcAddr(VkDevice device, const char* name);

/// The functions of a device that time needs. Null for any other name.
PFN_vkVoidFunction findTimingHook(const char* name);

}  // namespace vulkan
