// What Vulkan's loader asks a driver for.

#include "Real.h"

#include <dlfcn.h>
#include <vulkan/vk_icd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <vector>

namespace standin {

namespace {

std::atomic<VkInstance> gInstance = VK_NULL_HANDLE;  ///< any that lives

PFN_vkGetInstanceProcAddr softwareDriver() {
    static const auto lookUp = [] {
        void* const library = dlopen(SOFTWARE_DRIVER, RTLD_NOW | RTLD_LOCAL);
        return library == nullptr
                   ? nullptr
                   : reinterpret_cast<PFN_vkGetInstanceProcAddr>(dlsym(library, "vk_icdGetInstanceProcAddr"));
    }();
    return lookUp;
}

std::vector<std::string> words() {
    const char* const text = std::getenv("STAND_IN");  // NOLINT(concurrency-mt-unsafe): nobody sets it
    std::istringstream stream(text == nullptr ? "" : text);
    std::vector<std::string> all;
    for (std::string word; stream >> word;) {
        all.push_back(word);
    }
    return all;
}

constexpr std::array<VkExtensionProperties, 2> INSTANCE_EXTENSIONS = {
    {{VK_EXT_HEADLESS_SURFACE_EXTENSION_NAME, 1}, {VK_EXT_SWAPCHAIN_COLOR_SPACE_EXTENSION_NAME, 4}}};
constexpr std::array<VkExtensionProperties, 2> DEVICE_EXTENSIONS = {
    {{VK_KHR_SHARED_PRESENTABLE_IMAGE_EXTENSION_NAME, 1}, {VK_KHR_DISPLAY_SWAPCHAIN_EXTENSION_NAME, 10}}};

/// The software driver's extensions, and `more`.
template <typename More, typename Enumerate>
VkResult enumerate(const More& more, std::uint32_t* count, VkExtensionProperties* properties,
                   const Enumerate& enumerateReal) {
    std::uint32_t realCount = 0;
    enumerateReal(&realCount, nullptr);
    std::vector<VkExtensionProperties> all(realCount);
    enumerateReal(&realCount, all.data());
    all.insert(all.end(), more.begin(), more.end());
    const auto size = static_cast<std::uint32_t>(all.size());
    if (properties == nullptr) {
        *count = size;
        return VK_SUCCESS;
    }
    *count = std::min(*count, size);
    std::copy_n(all.begin(), *count, properties);
    return *count < size ? VK_INCOMPLETE : VK_SUCCESS;
}

VKAPI_ATTR VkResult VKAPI_CALL enumerateInstance(const char* layer, std::uint32_t* count,
                                                 VkExtensionProperties* properties) {
    return enumerate(INSTANCE_EXTENSIONS, count, properties,
                     [layer](std::uint32_t* n, VkExtensionProperties* p) {
                         REAL(vkEnumerateInstanceExtensionProperties)(layer, n, p);
                     });
}

VKAPI_ATTR VkResult VKAPI_CALL enumerateDevice(VkPhysicalDevice device, const char* layer,
                                               std::uint32_t* count, VkExtensionProperties* properties) {
    return enumerate(DEVICE_EXTENSIONS, count, properties,
                     [device, layer](std::uint32_t* n, VkExtensionProperties* p) {
                         REAL(vkEnumerateDeviceExtensionProperties)(device, layer, n, p);
                     });
}

/// The names without those that only this driver has.
template <typename Own>
std::vector<const char*> without(const Own& own, const char* const* names, std::uint32_t count) {
    std::vector<const char*> kept;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (std::none_of(own.begin(), own.end(), [&](const VkExtensionProperties& each) {
                return std::strcmp(each.extensionName, names[i]) == 0;
            })) {
            kept.push_back(names[i]);
        }
    }
    return kept;
}

VKAPI_ATTR VkResult VKAPI_CALL createInstance(const VkInstanceCreateInfo* info,
                                              const VkAllocationCallbacks* allocator, VkInstance* instance) {
    const auto names =
        without(INSTANCE_EXTENSIONS, info->ppEnabledExtensionNames, info->enabledExtensionCount);
    VkInstanceCreateInfo changed = *info;
    changed.ppEnabledExtensionNames = names.data();
    changed.enabledExtensionCount = static_cast<std::uint32_t>(names.size());
    const VkResult result = REAL(vkCreateInstance)(&changed, allocator, instance);
    if (result == VK_SUCCESS) {
        gInstance = *instance;
    }
    return result;
}

/// All queues are the software driver's only one.
VKAPI_ATTR VkResult VKAPI_CALL createDevice(VkPhysicalDevice physicalDevice, const VkDeviceCreateInfo* info,
                                            const VkAllocationCallbacks* allocator, VkDevice* device) {
    const auto names = without(DEVICE_EXTENSIONS, info->ppEnabledExtensionNames, info->enabledExtensionCount);
    VkDeviceCreateInfo changed = *info;
    changed.ppEnabledExtensionNames = names.data();
    changed.enabledExtensionCount = static_cast<std::uint32_t>(names.size());
    constexpr float PRIORITY = 1.0F;
    const VkDeviceQueueCreateInfo queue = {
        VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO, nullptr, 0, 0, 1, &PRIORITY};
    changed.queueCreateInfoCount = 1;
    changed.pQueueCreateInfos = &queue;
    return REAL(vkCreateDevice)(physicalDevice, &changed, allocator, device);
}

PFN_vkVoidFunction find(const char* name);

VKAPI_ATTR PFN_vkVoidFunction VKAPI_CALL getDeviceProcAddr(VkDevice device, const char* name) {
    const PFN_vkVoidFunction hook = find(name);
    return hook != nullptr ? hook : REAL(vkGetDeviceProcAddr)(device, name);
}

PFN_vkVoidFunction find(const char* name) {
    const Hook hooks[] = {HOOK(vkEnumerateInstanceExtensionProperties, enumerateInstance),
                          HOOK(vkEnumerateDeviceExtensionProperties, enumerateDevice),
                          HOOK(vkCreateInstance, createInstance), HOOK(vkCreateDevice, createDevice),
                          HOOK(vkGetDeviceProcAddr, getDeviceProcAddr)};
    if (const PFN_vkVoidFunction hook = findIn(hooks, name)) {
        return hook;
    }
    for (const auto part : {findSwapchainHook, findQueueHook, findRefusal}) {
        if (const PFN_vkVoidFunction hook = part(name)) {
            return hook;
        }
    }
    return nullptr;
}

}  // namespace

PFN_vkVoidFunction lookUp(const char* name) {
    const PFN_vkVoidFunction global = softwareDriver()(VK_NULL_HANDLE, name);
    return global != nullptr ? global : softwareDriver()(gInstance, name);
}

std::uint32_t number(const char* word, std::string* rest) {
    const std::string start = std::string(word) + '=';
    for (const std::string& each : words()) {
        if (each.compare(0, start.size(), start) == 0) {
            const std::size_t colon = each.find(':');
            if (rest != nullptr && colon != std::string::npos) {
                *rest = each.substr(colon + 1);
            }
            return static_cast<std::uint32_t>(std::stoul(each.substr(start.size())));
        }
    }
    return 0;
}

bool has(const char* word) {
    const auto all = words();
    return std::find(all.begin(), all.end(), word) != all.end();
}

bool isTurn(std::uint32_t& count, std::uint32_t wanted) {
    return ++count == wanted;
}

}  // namespace standin

extern "C" {

[[gnu::visibility("default")]] VKAPI_ATTR VkResult VKAPI_CALL
vk_icdNegotiateLoaderICDInterfaceVersion(std::uint32_t* version) {
    *version = std::min(*version, 5U);
    return VK_SUCCESS;
}

[[gnu::visibility("default")]] VKAPI_ATTR PFN_vkVoidFunction VKAPI_CALL
vk_icdGetInstanceProcAddr(VkInstance instance, const char* name) {
    if (standin::softwareDriver() == nullptr) {
        return nullptr;
    }
    const PFN_vkVoidFunction hook = standin::find(name);
    return hook != nullptr ? hook : standin::softwareDriver()(instance, name);
}

}  // extern "C"
