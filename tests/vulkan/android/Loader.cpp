// Android's Vulkan loader with one layer, played: a libvulkan for programs that are not changed. The layer is
// the file that LAYER names, below it is the driver that DRIVER names. Ends the process when the layer breaks
// a rule.

#include <dlfcn.h>
#include <vulkan/vk_layer.h>

#include <cstdlib>
#include <cstring>
#include <iostream>

namespace {

PFN_vkGetInstanceProcAddr gLayer = nullptr;
PFN_vkGetDeviceProcAddr gLayerOfDevice = nullptr;
PFN_vkGetInstanceProcAddr gDriver = nullptr;

[[noreturn]] void fail(const char* what) {
    std::cerr << "the layer and Android's loader: " << what << '\n';
    std::exit(3);  // NOLINT(concurrency-mt-unsafe): it is over
}

template <typename Function>
Function find(void* library, const char* name) {
    const auto function = reinterpret_cast<Function>(dlsym(library, name));
    if (function == nullptr) {
        fail(name);
    }
    return function;
}

void* open(const char* variable) {
    void* const library =
        dlopen(std::getenv(variable), RTLD_NOW | RTLD_LOCAL);  // NOLINT(concurrency-mt-unsafe)
    if (library == nullptr) {
        fail(dlerror());
    }
    return library;
}

/// Opened, asked, closed, and opened again for an instance.
[[gnu::constructor]] void load() {
    void* const asked = open("LAYER");
    VkLayerProperties ofInstance = {};
    VkLayerProperties ofDevice = {};
    std::uint32_t count = 1;
    find<PFN_vkEnumerateInstanceLayerProperties>(asked, "vkEnumerateInstanceLayerProperties")(&count,
                                                                                              &ofInstance);
    find<PFN_vkEnumerateDeviceLayerProperties>(asked, "vkEnumerateDeviceLayerProperties")(VK_NULL_HANDLE,
                                                                                          &count, &ofDevice);
    if (count != 1 || std::memcmp(&ofInstance, &ofDevice, sizeof(ofDevice)) != 0) {
        fail("its properties differ");
    }
    const auto extensions =
        find<PFN_vkEnumerateInstanceExtensionProperties>(asked, "vkEnumerateInstanceExtensionProperties");
    if (extensions(ofInstance.layerName, &count, nullptr) != VK_SUCCESS || count != 0) {
        fail("its extensions");
    }
    dlclose(asked);
    void* const layer = open("LAYER");
    gLayer = find<PFN_vkGetInstanceProcAddr>(layer, "vkGetInstanceProcAddr");
    gLayerOfDevice = find<PFN_vkGetDeviceProcAddr>(layer, "vkGetDeviceProcAddr");
    gDriver = find<PFN_vkGetInstanceProcAddr>(open("DRIVER"), "vk_icdGetInstanceProcAddr");
}

PFN_vkVoidFunction lookUpBelow(VkDevice device, const char* name);

}  // namespace

#define EXPORT extern "C" [[gnu::visibility("default")]] VKAPI_ATTR

// A name that programs call, and where it leads.
#define NAME(name)                                              \
    extern "C" {                                                \
    [[gnu::visibility("hidden")]] PFN_vkVoidFunction to_##name; \
    }                                                           \
    asm(".globl " #name "\n.type " #name ", @function\n" #name ": jmp *to_" #name "(%rip)\n");
#include "names.inc"
#undef NAME

namespace {

PFN_vkVoidFunction lookUpBelow(VkDevice device, const char* name) {
    return reinterpret_cast<PFN_vkGetDeviceProcAddr>(gDriver(VK_NULL_HANDLE, "vkGetDeviceProcAddr"))(device,
                                                                                                     name);
}

const struct {
    const char* name;
    PFN_vkVoidFunction* place;
} NAMES[] = {
#define NAME(name) {#name, &to_##name},
#include "names.inc"
#undef NAME
};

}  // namespace

EXPORT PFN_vkVoidFunction VKAPI_CALL vkGetInstanceProcAddr(VkInstance instance, const char* name) {
    return gLayer(instance, name);
}

EXPORT PFN_vkVoidFunction VKAPI_CALL vkGetDeviceProcAddr(VkDevice device, const char* name) {
    return gLayerOfDevice(device, name);
}

EXPORT VkResult VKAPI_CALL vkCreateInstance(const VkInstanceCreateInfo* info,
                                            const VkAllocationCallbacks* allocator, VkInstance* instance) {
    VkLayerInstanceLink link = {nullptr, gDriver, nullptr};
    VkLayerInstanceCreateInfo chain = {};
    chain.sType = VK_STRUCTURE_TYPE_LOADER_INSTANCE_CREATE_INFO;
    chain.pNext = info->pNext;
    chain.function = VK_LAYER_LINK_INFO;
    chain.u.pLayerInfo = &link;
    VkInstanceCreateInfo changed = *info;
    changed.pNext = &chain;
    const auto create = reinterpret_cast<PFN_vkCreateInstance>(gLayer(VK_NULL_HANDLE, "vkCreateInstance"));
    const VkResult result = create(&changed, allocator, instance);
    for (const auto& each : NAMES) {
        *each.place = result == VK_SUCCESS ? gLayer(*instance, each.name) : nullptr;
    }
    return result;
}

EXPORT VkResult VKAPI_CALL vkCreateDevice(VkPhysicalDevice physicalDevice, const VkDeviceCreateInfo* info,
                                          const VkAllocationCallbacks* allocator, VkDevice* device) {
    VkLayerDeviceLink link = {nullptr, gDriver, lookUpBelow};
    VkLayerDeviceCreateInfo chain = {};
    chain.sType = VK_STRUCTURE_TYPE_LOADER_DEVICE_CREATE_INFO;
    chain.pNext = info->pNext;
    chain.function = VK_LAYER_LINK_INFO;
    chain.u.pLayerInfo = &link;
    VkDeviceCreateInfo changed = *info;
    changed.pNext = &chain;
    const auto create = reinterpret_cast<PFN_vkCreateDevice>(gLayer(VK_NULL_HANDLE, "vkCreateDevice"));
    const VkResult result = create(physicalDevice, &changed, allocator, device);
    for (const auto& each : NAMES) {
        const PFN_vkVoidFunction ofDevice =
            result == VK_SUCCESS ? gLayerOfDevice(*device, each.name) : nullptr;
        *each.place = ofDevice != nullptr ? ofDevice : *each.place;
    }
    return result;
}
