// Android's Vulkan loader with one layer, played: a libvulkan for programs that are not changed. The layer is
// the first libVkLayer*.so in the folder LAYERS, below it is the driver that DRIVER names. Ends the process
// when the layer breaks a rule.

#include <dlfcn.h>
#include <glob.h>
#include <vulkan/vk_layer.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

PFN_vkGetInstanceProcAddr gLayer = nullptr;
PFN_vkGetDeviceProcAddr gLayerOfDevice = nullptr;
PFN_vkGetInstanceProcAddr gDriver = nullptr;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "the layer and Android's loader: %s\n", what);
    std::_Exit(3);  // the program has not begun
}

template <typename Function>
Function find(void* library, const char* name) {
    const auto function = reinterpret_cast<Function>(dlsym(library, name));
    if (function == nullptr) {
        fail(name);
    }
    return function;
}

void* open(const std::string& path) {
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        fail(dlerror());
    }
    return library;
}

std::string layerFile() {
    const std::string pattern =
        std::string(std::getenv("LAYERS")) + "/libVkLayer*.so";  // NOLINT(concurrency-mt-unsafe)
    glob_t found = {};
    if (glob(pattern.c_str(), 0, nullptr, &found) != 0) {
        fail("there is no libVkLayer*.so");
    }
    std::string file = found.gl_pathv[0];
    globfree(&found);
    return file.front() == '/' ? file : "./" + file;
}

/// The layer's own name for a look-up goes before the common one.
template <typename Function>
Function findLookUp(void* layer, const std::string& name, const char* what) {
    void* const own = dlsym(layer, (name + what).c_str());
    return own != nullptr ? reinterpret_cast<Function>(own)
                          : find<Function>(layer, (std::string("vk") + what).c_str());
}

/// Opened, asked, closed, and opened again for an instance.
[[gnu::constructor]] void load() {
    const std::string file = layerFile();
    void* const asked = open(file);
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
    void* const layer = open(file);
    gLayer = findLookUp<PFN_vkGetInstanceProcAddr>(layer, ofInstance.layerName, "GetInstanceProcAddr");
    gLayerOfDevice = findLookUp<PFN_vkGetDeviceProcAddr>(layer, ofInstance.layerName, "GetDeviceProcAddr");
    void* const driver = open(std::getenv("DRIVER"));  // NOLINT(concurrency-mt-unsafe)
    gDriver = find<PFN_vkGetInstanceProcAddr>(driver, "vk_icdGetInstanceProcAddr");
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
