// What Vulkan's loader calls.

#include "ostra/PerProcess.h"
#include "utils/Log.h"
#include "vulkan/entry/Hooks.h"
#include "vulkan/entry/Layer.h"
#include "vulkan/timing/Calibration.h"

#include <exception>
#include <memory>
#include <new>

namespace vulkan {

/// Never destroyed: programs call Vulkan until their last moment.
DispatchMap<Instance>& instances() {
    static auto* const all = new DispatchMap<Instance>;
    return *all;
}

DispatchMap<Device>& devices() {
    static auto* const all = new DispatchMap<Device>;
    return *all;
}

namespace {

/// The loader's structure of a type in a chain; of those that come twice, the one that says `function`.
template <typename Info>
Info* findLink(const void* chain, VkStructureType type, VkLayerFunction function) {
    for (const auto* each = static_cast<const VkBaseInStructure*>(chain); each != nullptr;
         each = each->pNext) {
        if (each->sType == type) {
            const auto* const info = reinterpret_cast<const Info*>(each);
            if (info->function == function) {
                return const_cast<Info*>(info);  // NOLINT: the loader wants it advanced
            }
        }
    }
    return nullptr;
}

VKAPI_ATTR VkResult VKAPI_CALL createInstance(const VkInstanceCreateInfo* info,
                                              const VkAllocationCallbacks* allocator, VkInstance* instance) {
    auto* const link = findLink<VkLayerInstanceCreateInfo>(
        info->pNext, VK_STRUCTURE_TYPE_LOADER_INSTANCE_CREATE_INFO, VK_LAYER_LINK_INFO);
    if (link == nullptr || link->u.pLayerInfo == nullptr) {
        return VK_ERROR_INITIALIZATION_FAILED;
    }
    const PFN_vkGetInstanceProcAddr lookUp = link->u.pLayerInfo->pfnNextGetInstanceProcAddr;
    link->u.pLayerInfo = link->u.pLayerInfo->pNext;
    const auto create = reinterpret_cast<PFN_vkCreateInstance>(lookUp(VK_NULL_HANDLE, "vkCreateInstance"));
    if (create == nullptr) {
        return VK_ERROR_INITIALIZATION_FAILED;
    }
    const VkResult result = create(info, allocator, instance);
    if (result != VK_SUCCESS) {
        return result;
    }
    InstanceFunctions functions;
    const bool isComplete = functions.load(*instance, lookUp);
    try {
        instances().insert(keyOf(*instance), std::make_unique<Instance>(Instance{
                                                 *instance, functions, isComplete, hasProperties2(*info)}));
    } catch (const std::bad_alloc&) {
        // Without a record nothing could be passed on.
        if (functions.DestroyInstance != nullptr) {
            functions.DestroyInstance(*instance, allocator);
        }
        return VK_ERROR_OUT_OF_HOST_MEMORY;
    }
    return result;
}

VKAPI_ATTR void VKAPI_CALL destroyInstance(VkInstance instance, const VkAllocationCallbacks* allocator) {
    if (instance == VK_NULL_HANDLE) {
        return;
    }
    void* const key = keyOf(instance);
    if (const Instance* const found = instances().find(key)) {
        const PFN_vkDestroyInstance destroy = found->functions.DestroyInstance;
        // The loader may give the next instance the same key at once.
        const std::unique_ptr<Instance> gone = instances().remove(key);
        destroy(instance, allocator);
    }
}

/// For a loader without a function for it: its objects begin with what the device begins with.
VKAPI_ATTR VkResult VKAPI_CALL takeDevicesData(VkDevice device, void* object) {
    *static_cast<void**>(object) = keyOf(device);
    return VK_SUCCESS;
}

VKAPI_ATTR VkResult VKAPI_CALL createDevice(VkPhysicalDevice physicalDevice, const VkDeviceCreateInfo* info,
                                            const VkAllocationCallbacks* allocator, VkDevice* device) {
    auto* const link = findLink<VkLayerDeviceCreateInfo>(
        info->pNext, VK_STRUCTURE_TYPE_LOADER_DEVICE_CREATE_INFO, VK_LAYER_LINK_INFO);
    const auto* const callback = findLink<VkLayerDeviceCreateInfo>(
        info->pNext, VK_STRUCTURE_TYPE_LOADER_DEVICE_CREATE_INFO, VK_LOADER_DATA_CALLBACK);
    const Instance* const instance = instances().find(keyOf(physicalDevice));
    if (link == nullptr || link->u.pLayerInfo == nullptr || instance == nullptr) {
        return VK_ERROR_INITIALIZATION_FAILED;
    }
    const PFN_vkGetInstanceProcAddr instanceLookUp = link->u.pLayerInfo->pfnNextGetInstanceProcAddr;
    const PFN_vkGetDeviceProcAddr lookUp = link->u.pLayerInfo->pfnNextGetDeviceProcAddr;
    VkLayerDeviceLink* const next = link->u.pLayerInfo->pNext;
    const auto create =
        reinterpret_cast<PFN_vkCreateDevice>(instanceLookUp(instance->handle, "vkCreateDevice"));
    if (create == nullptr) {
        return VK_ERROR_INITIALIZATION_FAILED;
    }
    const CalibratedDeviceInfo calibrated(instance->functions, physicalDevice, instance->hasProperties2,
                                          *info);
    link->u.pLayerInfo = next;
    VkResult result = create(physicalDevice, calibrated.info(), allocator, device);
    Gpu gpu;
    gpu.isCalibrated = calibrated.isCalibrated();
    gpu.hidesCalibration = calibrated.isOurs();
    if (result != VK_SUCCESS && gpu.hidesCalibration) {
        // What we added may be the reason. The layers below have moved the link on.
        gpu.isCalibrated = gpu.hidesCalibration = false;
        link->u.pLayerInfo = next;
        result = create(physicalDevice, info, allocator, device);
    }
    if (result != VK_SUCCESS) {
        return result;
    }
    gpu.device = *device;
    gpu.physicalDevice = physicalDevice;
    gpu.instance = &instance->functions;
    const bool isComplete = gpu.vk.load(*device, lookUp);
    gpu.setLoaderData = callback == nullptr ? takeDevicesData : callback->u.pfnSetDeviceLoaderData;
    if (instance->functions.GetPhysicalDeviceMemoryProperties != nullptr) {
        instance->functions.GetPhysicalDeviceMemoryProperties(physicalDevice, &gpu.memory);
    }
    if (instance->functions.GetPhysicalDeviceProperties != nullptr) {
        VkPhysicalDeviceProperties properties = {};
        instance->functions.GetPhysicalDeviceProperties(physicalDevice, &properties);
        gpu.timeStampPeriod = properties.limits.timestampPeriod;
    }
    try {
        devices().insert(keyOf(*device), std::make_unique<Device>(*instance, gpu, isComplete));
    } catch (const std::bad_alloc&) {
        if (gpu.vk.DestroyDevice != nullptr) {
            gpu.vk.DestroyDevice(*device, allocator);
        }
        return VK_ERROR_OUT_OF_HOST_MEMORY;
    }
    return result;
}

VKAPI_ATTR void VKAPI_CALL destroyDevice(VkDevice device, const VkAllocationCallbacks* allocator) {
    if (device == VK_NULL_HANDLE) {
        return;
    }
    if (std::unique_ptr<Device> gone = devices().remove(keyOf(device))) {
        if (Layer* const layer = platform::PerProcess<Layer>::find()) {
            layer->passes().forget(gone->gpu());
        }
        const PFN_vkDestroyDevice destroy = gone->gpu().vk.DestroyDevice;
        gone.reset();
        destroy(device, allocator);
    }
}

VKAPI_ATTR void VKAPI_CALL getDeviceQueue(VkDevice device, std::uint32_t family, std::uint32_t index,
                                          VkQueue* queue) {
    Device& record = *devices().find(keyOf(device));
    record.gpu().vk.GetDeviceQueue(device, family, index, queue);
    try {
        record.addQueue(*queue, family);
    } catch (const std::bad_alloc&) {
        // What is presented on it is passed through.
    }
}

VKAPI_ATTR void VKAPI_CALL getDeviceQueue2(VkDevice device, const VkDeviceQueueInfo2* info, VkQueue* queue) {
    Device& record = *devices().find(keyOf(device));
    record.gpu().vk.GetDeviceQueue2(device, info, queue);
    try {
        record.addQueue(*queue, info->queueFamilyIndex);
    } catch (const std::bad_alloc&) {
        // What is presented on it is passed through.
    }
}

VKAPI_ATTR VkResult VKAPI_CALL createSwapchain(VkDevice device, const VkSwapchainCreateInfoKHR* info,
                                               const VkAllocationCallbacks* allocator,
                                               VkSwapchainKHR* swapchain) {
    Device& record = *devices().find(keyOf(device));
    Swapchain* made = nullptr;
    const VkResult result = record.createSwapchain(*info, allocator, swapchain, made);
    Layer* const layer = platform::PerProcess<Layer>::find();
    const Swapchain* const last =
        info->oldSwapchain == VK_NULL_HANDLE ? nullptr : record.findSwapchain(info->oldSwapchain);
    if (layer != nullptr && last != nullptr && made != nullptr) {
        layer->replace(*last, *made);
    }
    return result;
}

VKAPI_ATTR VkResult VKAPI_CALL createSharedSwapchains(VkDevice device, std::uint32_t count,
                                                      const VkSwapchainCreateInfoKHR* infos,
                                                      const VkAllocationCallbacks* allocator,
                                                      VkSwapchainKHR* swapchains) {
    Device& record = *devices().find(keyOf(device));
    const VkResult result =
        record.gpu().vk.CreateSharedSwapchainsKHR(device, count, infos, allocator, swapchains);
    if (result == VK_SUCCESS) {
        record.addSharedSwapchains(count, swapchains);
    }
    return result;
}

VKAPI_ATTR void VKAPI_CALL destroySwapchain(VkDevice device, VkSwapchainKHR swapchain,
                                            const VkAllocationCallbacks* allocator) {
    devices().find(keyOf(device))->destroySwapchain(swapchain, allocator);
}

VKAPI_ATTR VkResult VKAPI_CALL queuePresent(VkQueue queue, const VkPresentInfoKHR* info) {
    Device& record = *devices().find(keyOf(queue));
    try {
        return platform::PerProcess<Layer>::get().present(record, queue, *info);
    } catch (const std::exception&) {
        // There is no layer for lack of memory.
        return record.gpu().vk.QueuePresentKHR(queue, info);
    }
}

PFN_vkVoidFunction findDeviceHook(const char* name) {
    static const Hook HOOKS[] = {{"vkGetDeviceProcAddr", erase(getDeviceProcAddr)},
                                 {"vkDestroyDevice", erase(destroyDevice)},
                                 {"vkGetDeviceQueue", erase(getDeviceQueue)},
                                 {"vkGetDeviceQueue2", erase(getDeviceQueue2)},
                                 {"vkCreateSwapchainKHR", erase(createSwapchain)},
                                 {"vkDestroySwapchainKHR", erase(destroySwapchain)},
                                 {"vkCreateSharedSwapchainsKHR", erase(createSharedSwapchains)},
                                 {"vkQueuePresentKHR", erase(queuePresent)}};
    const PFN_vkVoidFunction hook = findHook(HOOKS, name);
    return hook != nullptr ? hook : findTimingHook(name);
}

PFN_vkVoidFunction findInstanceHook(const char* name) {
    static const Hook HOOKS[] = {{"vkGetInstanceProcAddr", erase(getInstanceProcAddr)},
                                 {"vkCreateInstance", erase(createInstance)},
                                 {"vkDestroyInstance", erase(destroyInstance)},
                                 {"vkCreateDevice", erase(createDevice)}};
    return findHook(HOOKS, name);
}

}  // namespace

/// A function that the application did not ask for is not there for it, hooked or not.
VKAPI_ATTR PFN_vkVoidFunction VKAPI_CALL getDeviceProcAddr(VkDevice device, const char* name) {
    const Device* const record = device == VK_NULL_HANDLE ? nullptr : devices().find(keyOf(device));
    if (record == nullptr || name == nullptr) {
        return nullptr;
    }
    if (record->gpu().hidesCalibration && std::strcmp(name, "vkGetCalibratedTimestampsEXT") == 0) {
        return nullptr;
    }
    const PFN_vkVoidFunction next = record->gpu().vk.GetDeviceProcAddr(device, name);
    const PFN_vkVoidFunction hook = next == nullptr ? nullptr : findDeviceHook(name);
    return hook == nullptr ? next : hook;
}

VKAPI_ATTR PFN_vkVoidFunction VKAPI_CALL getInstanceProcAddr(VkInstance instance, const char* name) {
    if (name == nullptr) {
        return nullptr;
    }
    if (const PFN_vkVoidFunction hook = findInstanceHook(name)) {
        return hook;
    }
    const Instance* const record = instance == VK_NULL_HANDLE ? nullptr : instances().find(keyOf(instance));
    if (record == nullptr) {
        return nullptr;
    }
    const PFN_vkVoidFunction next = record->functions.GetInstanceProcAddr(instance, name);
    const PFN_vkVoidFunction hook = next == nullptr ? nullptr : findDeviceHook(name);
    return hook == nullptr ? next : hook;
}

}  // namespace vulkan
