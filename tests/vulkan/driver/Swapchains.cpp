#include "Swapchains.h"

#include <vulkan/vk_icd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iostream>
#include <memory>
#include <mutex>
#include <set>
#include <vector>

namespace standin {

namespace {

struct Swapchain {
    VkDevice device = VK_NULL_HANDLE;
    VkSwapchainCreateInfoKHR info = {};
    std::vector<VkImage> images;
    std::vector<VkDeviceMemory> memories;
    std::vector<VkSemaphore> waited;  ///< for each image: by its present, until it is acquired again
    std::uint32_t next = 0;
    bool isOutdated = false;
};

std::mutex gSetsMutex;  ///< around the sets and the counts
std::set<const void*> gSurfaces;
std::set<const void*> gSwapchains;
std::uint32_t gPresents = 0;

template <typename Handle>
bool isOurs(const std::set<const void*>& all, Handle handle) {
    const std::lock_guard<std::mutex> lock(gSetsMutex);
    return all.count(reinterpret_cast<const void*>(handle)) != 0;
}

template <typename Handle>
void change(std::set<const void*>& all, Handle handle, bool isAdded) {
    const std::lock_guard<std::mutex> lock(gSetsMutex);
    if (isAdded) {
        all.insert(reinterpret_cast<const void*>(handle));
    } else {
        all.erase(reinterpret_cast<const void*>(handle));
    }
}

template <typename All, typename Element>
VkResult enumerate(const All& all, std::uint32_t* count, Element* elements) {
    const auto size = static_cast<std::uint32_t>(all.size());
    *count = elements == nullptr ? size : std::min(*count, size);
    if (elements != nullptr) {
        std::copy_n(all.begin(), *count, elements);
    }
    return elements != nullptr && *count < size ? VK_INCOMPLETE : VK_SUCCESS;
}

VKAPI_ATTR VkResult VKAPI_CALL createSurface(VkInstance, const VkHeadlessSurfaceCreateInfoEXT*,
                                             const VkAllocationCallbacks*, VkSurfaceKHR* surface) {
    *surface = reinterpret_cast<VkSurfaceKHR>(new VkIcdSurfaceHeadless{{VK_ICD_WSI_PLATFORM_HEADLESS}});
    change(gSurfaces, *surface, true);
    return VK_SUCCESS;
}

VKAPI_ATTR void VKAPI_CALL destroySurface(VkInstance instance, VkSurfaceKHR surface,
                                          const VkAllocationCallbacks* allocator) {
    if (!isOurs(gSurfaces, surface)) {
        REAL(vkDestroySurfaceKHR)(instance, surface, allocator);
        return;
    }
    change(gSurfaces, surface, false);
    delete reinterpret_cast<VkIcdSurfaceHeadless*>(surface);
}

VKAPI_ATTR VkResult VKAPI_CALL getSupport(VkPhysicalDevice device, std::uint32_t, VkSurfaceKHR surface,
                                          VkBool32* isSupported) {
    *isSupported = VK_TRUE;
    return isOurs(gSurfaces, surface)
               ? VK_SUCCESS
               : REAL(vkGetPhysicalDeviceSurfaceSupportKHR)(device, 0, surface, isSupported);
}

VKAPI_ATTR VkResult VKAPI_CALL getCapabilities(VkPhysicalDevice device, VkSurfaceKHR surface,
                                               VkSurfaceCapabilitiesKHR* capabilities) {
    constexpr VkImageUsageFlags ALL = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_SAMPLED_BIT |
                                      VK_IMAGE_USAGE_TRANSFER_SRC_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT;
    if (isOurs(gSurfaces, surface)) {
        *capabilities = {};
        capabilities->minImageCount = 1;
        capabilities->maxImageCount = 8;
        capabilities->currentExtent = {UINT32_MAX, UINT32_MAX};
        capabilities->minImageExtent = {1, 1};
        capabilities->maxImageExtent = {4096, 4096};
        capabilities->maxImageArrayLayers = 2;
        capabilities->supportedTransforms = 0x1FF;
        capabilities->currentTransform = VK_SURFACE_TRANSFORM_IDENTITY_BIT_KHR;
        capabilities->supportedCompositeAlpha = VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR;
        capabilities->supportedUsageFlags = ALL;
    } else if (const VkResult result =
                   REAL(vkGetPhysicalDeviceSurfaceCapabilitiesKHR)(device, surface, capabilities)) {
        return result;
    }
    if (has("plain")) {
        capabilities->supportedUsageFlags = VK_IMAGE_USAGE_TRANSFER_DST_BIT;
    }
    return VK_SUCCESS;
}

VKAPI_ATTR VkResult VKAPI_CALL getFormats(VkPhysicalDevice device, VkSurfaceKHR surface, std::uint32_t* count,
                                          VkSurfaceFormatKHR* formats) {
    constexpr std::array<VkSurfaceFormatKHR, 6> ALL = {
        {{VK_FORMAT_B8G8R8A8_UNORM, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR},
         {VK_FORMAT_B8G8R8A8_SRGB, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR},
         {VK_FORMAT_R8G8B8A8_UNORM, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR},
         {VK_FORMAT_A2B10G10R10_UNORM_PACK32, VK_COLOR_SPACE_SRGB_NONLINEAR_KHR},
         {VK_FORMAT_A2B10G10R10_UNORM_PACK32, VK_COLOR_SPACE_HDR10_ST2084_EXT},
         {VK_FORMAT_R16G16B16A16_SFLOAT, VK_COLOR_SPACE_EXTENDED_SRGB_LINEAR_EXT}}};
    return isOurs(gSurfaces, surface)
               ? enumerate(ALL, count, formats)
               : REAL(vkGetPhysicalDeviceSurfaceFormatsKHR)(device, surface, count, formats);
}

VKAPI_ATTR VkResult VKAPI_CALL getModes(VkPhysicalDevice device, VkSurfaceKHR surface, std::uint32_t* count,
                                        VkPresentModeKHR* modes) {
    constexpr std::array<VkPresentModeKHR, 5> ALL = {
        VK_PRESENT_MODE_FIFO_KHR, VK_PRESENT_MODE_IMMEDIATE_KHR, VK_PRESENT_MODE_MAILBOX_KHR,
        VK_PRESENT_MODE_FIFO_RELAXED_KHR, VK_PRESENT_MODE_SHARED_DEMAND_REFRESH_KHR};
    return isOurs(gSurfaces, surface)
               ? enumerate(ALL, count, modes)
               : REAL(vkGetPhysicalDeviceSurfacePresentModesKHR)(device, surface, count, modes);
}

VkResult createImage(Swapchain& swapchain) {
    const VkSwapchainCreateInfoKHR& from = swapchain.info;
    VkImageCreateInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO;
    info.imageType = VK_IMAGE_TYPE_2D;
    info.format = from.imageFormat;
    info.extent = {from.imageExtent.width, from.imageExtent.height, 1};
    info.mipLevels = 1;
    info.arrayLayers = from.imageArrayLayers;
    info.samples = VK_SAMPLE_COUNT_1_BIT;
    info.tiling = VK_IMAGE_TILING_OPTIMAL;
    info.usage = from.imageUsage | VK_IMAGE_USAGE_TRANSFER_SRC_BIT;
    VkImage image = VK_NULL_HANDLE;
    if (const VkResult result = REAL(vkCreateImage)(swapchain.device, &info, nullptr, &image)) {
        return result;
    }
    swapchain.images.push_back(image);
    VkMemoryRequirements needs = {};
    REAL(vkGetImageMemoryRequirements)(swapchain.device, image, &needs);
    const VkMemoryAllocateInfo allocation = {VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO, nullptr, needs.size, 0};
    VkDeviceMemory memory = VK_NULL_HANDLE;
    if (const VkResult result = REAL(vkAllocateMemory)(swapchain.device, &allocation, nullptr, &memory)) {
        return result;
    }
    swapchain.memories.push_back(memory);
    return REAL(vkBindImageMemory)(swapchain.device, image, memory, 0);
}

void destroy(Swapchain& swapchain) {
    for (VkImage image : swapchain.images) {
        REAL(vkDestroyImage)(swapchain.device, image, nullptr);
    }
    for (VkDeviceMemory memory : swapchain.memories) {
        REAL(vkFreeMemory)(swapchain.device, memory, nullptr);
    }
}

VKAPI_ATTR VkResult VKAPI_CALL createSwapchain(VkDevice device, const VkSwapchainCreateInfoKHR* info,
                                               const VkAllocationCallbacks* allocator,
                                               VkSwapchainKHR* handle) {
    if (!isOurs(gSurfaces, info->surface) && !has("unseen")) {
        return REAL(vkCreateSwapchainKHR)(device, info, allocator, handle);
    }
    if (has("strict") && info->imageUsage != VK_IMAGE_USAGE_TRANSFER_DST_BIT) {
        return VK_ERROR_INITIALIZATION_FAILED;
    }
    auto swapchain = std::make_unique<Swapchain>(Swapchain{device, *info, {}, {}, {}, 0, false});
    const bool isShared = info->presentMode == VK_PRESENT_MODE_SHARED_DEMAND_REFRESH_KHR;
    const std::uint32_t count = isShared ? 1 : std::max(info->minImageCount, 3U);
    for (std::uint32_t i = 0; i < count; ++i) {
        if (const VkResult result = createImage(*swapchain)) {
            destroy(*swapchain);
            return result;
        }
    }
    swapchain->waited.resize(count);
    *handle = reinterpret_cast<VkSwapchainKHR>(swapchain.release());
    change(gSwapchains, *handle, true);
    return VK_SUCCESS;
}

VKAPI_ATTR VkResult VKAPI_CALL createShared(VkDevice device, std::uint32_t count,
                                            const VkSwapchainCreateInfoKHR* infos,
                                            const VkAllocationCallbacks* allocator, VkSwapchainKHR* handles) {
    return count == 1 ? createSwapchain(device, infos, allocator, handles) : VK_ERROR_INITIALIZATION_FAILED;
}

VKAPI_ATTR void VKAPI_CALL destroySwapchain(VkDevice device, VkSwapchainKHR handle,
                                            const VkAllocationCallbacks* allocator) {
    if (!isOurs(gSwapchains, handle)) {
        REAL(vkDestroySwapchainKHR)(device, handle, allocator);
        return;
    }
    change(gSwapchains, handle, false);
    const std::unique_ptr<Swapchain> swapchain(reinterpret_cast<Swapchain*>(handle));
    destroy(*swapchain);
}

VKAPI_ATTR VkResult VKAPI_CALL getImages(VkDevice device, VkSwapchainKHR handle, std::uint32_t* count,
                                         VkImage* images) {
    return isOurs(gSwapchains, handle)
               ? enumerate(reinterpret_cast<const Swapchain*>(handle)->images, count, images)
               : REAL(vkGetSwapchainImagesKHR)(device, handle, count, images);
}

VKAPI_ATTR VkResult VKAPI_CALL acquire(VkDevice device, VkSwapchainKHR handle, std::uint64_t timeout,
                                       VkSemaphore semaphore, VkFence fence, std::uint32_t* index) {
    beginRefusing();
    if (!isOurs(gSwapchains, handle)) {
        return REAL(vkAcquireNextImageKHR)(device, handle, timeout, semaphore, fence, index);
    }
    Swapchain& swapchain = *reinterpret_cast<Swapchain*>(handle);
    if (swapchain.isOutdated) {
        return VK_ERROR_OUT_OF_DATE_KHR;
    }
    *index = swapchain.next;
    swapchain.waited[*index] = VK_NULL_HANDLE;
    swapchain.next = (swapchain.next + 1) % static_cast<std::uint32_t>(swapchain.images.size());
    VkSubmitInfo info = {};
    info.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
    info.signalSemaphoreCount = semaphore == VK_NULL_HANDLE ? 0 : 1;
    info.pSignalSemaphores = &semaphore;
    VkQueue real = VK_NULL_HANDLE;
    REAL(vkGetDeviceQueue)(device, 0, 0, &real);
    return submit(real, info, fence);
}

VKAPI_ATTR VkResult VKAPI_CALL acquire2(VkDevice device, const VkAcquireNextImageInfoKHR* info,
                                        std::uint32_t* index) {
    return acquire(device, info->swapchain, info->timeout, info->semaphore, info->fence, index);
}

/// What STAND_IN wants this present to come to.
VkResult wantedResult(std::uint32_t present) {
    const struct {
        const char* word;
        VkResult result;
    } results[] = {{"lose", VK_ERROR_DEVICE_LOST},
                   {"suboptimal", VK_SUBOPTIMAL_KHR},
                   {"outdated", VK_ERROR_OUT_OF_DATE_KHR},
                   {"surfacelost", VK_ERROR_SURFACE_LOST_KHR}};
    for (const auto& each : results) {
        if (number(each.word) == present) {
            return each.result;
        }
    }
    return VK_SUCCESS;
}

/// What validation cannot know: a present has not waited for its semaphore for sure before its image is
/// acquired again.
void checkSemaphores(const VkPresentInfoKHR& info) {
    for (std::uint32_t i = 0; i < info.swapchainCount && info.waitSemaphoreCount > 0; ++i) {
        std::vector<VkSemaphore>& waited = reinterpret_cast<Swapchain*>(info.pSwapchains[i])->waited;
        const VkSemaphore semaphore = info.pWaitSemaphores[0];
        if (waited.size() > 1 && std::count(waited.begin(), waited.end(), semaphore) > 0) {
            std::cout << "Validation by the driver: a semaphore of a present is used again too early\n";
        }
        waited[info.pImageIndices[i]] = semaphore;
    }
}

VKAPI_ATTR VkResult VKAPI_CALL queuePresent(VkQueue queue, const VkPresentInfoKHR* info) {
    if (!isOurs(gSwapchains, info->pSwapchains[0])) {
        return REAL(vkQueuePresentKHR)(realQueue(queue), info);
    }
    checkSemaphores(*info);
    std::uint32_t present = 0;
    {
        const std::lock_guard<std::mutex> lock(gSetsMutex);
        present = ++gPresents;
    }
    VkQueue real = realQueue(queue);
    VkPresentInfoKHR rest = *info;
    std::string file;
    for (std::uint32_t i = 0; i < info->swapchainCount && number("shot", &file) == present; ++i) {
        const Swapchain& swapchain = *reinterpret_cast<Swapchain*>(info->pSwapchains[i]);
        const std::string name = i == 0 ? file : file + std::to_string(i);
        writePicture(swapchain.device, real, swapchain.images[info->pImageIndices[i]], swapchain.info, rest,
                     name);
        rest.waitSemaphoreCount = 0;
    }
    const std::vector<VkPipelineStageFlags> stages(rest.waitSemaphoreCount,
                                                   VK_PIPELINE_STAGE_ALL_COMMANDS_BIT);
    VkSubmitInfo waits = {};
    waits.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
    waits.waitSemaphoreCount = rest.waitSemaphoreCount;
    waits.pWaitSemaphores = rest.pWaitSemaphores;
    waits.pWaitDstStageMask = stages.data();
    VkResult result = submit(real, waits, VK_NULL_HANDLE);
    const VkResult wanted = wantedResult(present);
    if (wanted == VK_ERROR_DEVICE_LOST) {
        loseDevice();
    }
    result = wanted != VK_SUCCESS ? wanted : result;
    for (std::uint32_t i = 0; i < info->swapchainCount; ++i) {
        reinterpret_cast<Swapchain*>(info->pSwapchains[i])->isOutdated |= result == VK_ERROR_OUT_OF_DATE_KHR;
        if (info->pResults != nullptr) {
            info->pResults[i] = result;
        }
    }
    return result;
}

}  // namespace

std::uint32_t presents() {
    const std::lock_guard<std::mutex> lock(gSetsMutex);
    return gPresents;
}

PFN_vkVoidFunction findSwapchainHook(const char* name) {
    const Hook hooks[] = {HOOK(vkCreateHeadlessSurfaceEXT, createSurface),
                          HOOK(vkDestroySurfaceKHR, destroySurface),
                          HOOK(vkGetPhysicalDeviceSurfaceSupportKHR, getSupport),
                          HOOK(vkGetPhysicalDeviceSurfaceCapabilitiesKHR, getCapabilities),
                          HOOK(vkGetPhysicalDeviceSurfaceFormatsKHR, getFormats),
                          HOOK(vkGetPhysicalDeviceSurfacePresentModesKHR, getModes),
                          HOOK(vkCreateSwapchainKHR, createSwapchain),
                          HOOK(vkCreateSharedSwapchainsKHR, createShared),
                          HOOK(vkDestroySwapchainKHR, destroySwapchain),
                          HOOK(vkGetSwapchainImagesKHR, getImages),
                          HOOK(vkAcquireNextImageKHR, acquire),
                          HOOK(vkAcquireNextImage2KHR, acquire2),
                          HOOK(vkQueuePresentKHR, queuePresent)};
    return findIn(hooks, name);
}

}  // namespace standin
