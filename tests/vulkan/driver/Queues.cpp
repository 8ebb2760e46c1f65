// Queues of three families, all of them the software driver's one queue, and a device that can be lost.

#include "Real.h"

#include <vulkan/vk_icd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <deque>
#include <iostream>
#include <map>
#include <mutex>
#include <vector>

namespace standin {

namespace {

constexpr std::uint32_t QUEUES = 2;
constexpr std::array<VkQueueFlags, 3> FAMILIES = {
    VK_QUEUE_GRAPHICS_BIT | VK_QUEUE_COMPUTE_BIT | VK_QUEUE_TRANSFER_BIT,
    VK_QUEUE_COMPUTE_BIT | VK_QUEUE_TRANSFER_BIT, VK_QUEUE_TRANSFER_BIT};

/// The loader writes into the first word.
struct Queue {
    VK_LOADER_DATA loaderData;
    VkQueue real;
};

std::mutex gMutex;  ///< around the software driver's queue, and what follows
std::deque<Queue> gQueues;
std::map<std::pair<VkDevice, std::uint32_t>, Queue*> gByPlace;
std::uint32_t gSubmissions = 0;
std::atomic<bool> gIsLost = false;

VKAPI_ATTR void VKAPI_CALL getFamilies(VkPhysicalDevice device, std::uint32_t* count,
                                       VkQueueFamilyProperties* families) {
    if (families == nullptr) {
        *count = FAMILIES.size();
        return;
    }
    std::uint32_t one = 1;
    VkQueueFamilyProperties real = {};
    REAL(vkGetPhysicalDeviceQueueFamilyProperties)(device, &one, &real);
    *count = std::min(*count, static_cast<std::uint32_t>(FAMILIES.size()));
    for (std::uint32_t i = 0; i < *count; ++i) {
        families[i] = real;
        families[i].queueFlags = FAMILIES[i];
        families[i].queueCount = QUEUES;
    }
}

VKAPI_ATTR void VKAPI_CALL getFamilies2(VkPhysicalDevice device, std::uint32_t* count,
                                        VkQueueFamilyProperties2* families) {
    std::array<VkQueueFamilyProperties, FAMILIES.size()> plain = {};
    getFamilies(device, count, families == nullptr ? nullptr : plain.data());
    for (std::uint32_t i = 0; families != nullptr && i < *count; ++i) {
        families[i].queueFamilyProperties = plain[i];
    }
}

VKAPI_ATTR void VKAPI_CALL getQueue(VkDevice device, std::uint32_t family, std::uint32_t index,
                                    VkQueue* queue) {
    const std::lock_guard<std::mutex> lock(gMutex);
    Queue*& place = gByPlace[{device, family * QUEUES + index}];
    if (place == nullptr) {
        VkQueue real = VK_NULL_HANDLE;
        REAL(vkGetDeviceQueue)(device, 0, 0, &real);
        place = &gQueues.emplace_back(Queue{{ICD_LOADER_MAGIC}, real});
    }
    *queue = reinterpret_cast<VkQueue>(place);
}

VKAPI_ATTR void VKAPI_CALL getQueue2(VkDevice device, const VkDeviceQueueInfo2* info, VkQueue* queue) {
    getQueue(device, info->queueFamilyIndex, info->queueIndex, queue);
}

/// Draws in the render pass that is recorded; the client draws nothing.
std::atomic<std::uint32_t> gDraws = 0;
std::atomic<std::uint32_t> gMostDraws = 0;

VKAPI_ATTR void VKAPI_CALL drawIndirect(VkCommandBuffer commands, VkBuffer buffer, VkDeviceSize offset,
                                        std::uint32_t count, std::uint32_t stride) {
    gMostDraws = std::max(gMostDraws.load(), gDraws += count);
    REAL(vkCmdDrawIndirect)(commands, buffer, offset, count, stride);
}

VKAPI_ATTR void VKAPI_CALL endRenderPass(VkCommandBuffer commands) {
    gDraws = 0;
    REAL(vkCmdEndRenderPass)(commands);
}

VKAPI_ATTR void VKAPI_CALL destroyDevice(VkDevice device, const VkAllocationCallbacks* allocator) {
    if (has("count")) {
        std::cout << "presents " << presents() << ", submissions " << gSubmissions << ", most draws "
                  << gMostDraws << ", made when warm " << made() << '\n';
    }
    {
        const std::lock_guard<std::mutex> lock(gMutex);
        for (auto each = gByPlace.begin(); each != gByPlace.end();) {
            each = each->first.first == device ? gByPlace.erase(each) : std::next(each);
        }
    }
    REAL(vkDestroyDevice)(device, allocator);
}

VKAPI_ATTR VkResult VKAPI_CALL createPool(VkDevice device, const VkCommandPoolCreateInfo* info,
                                          const VkAllocationCallbacks* allocator, VkCommandPool* pool) {
    VkCommandPoolCreateInfo changed = *info;
    changed.queueFamilyIndex = 0;
    return REAL(vkCreateCommandPool)(device, &changed, allocator, pool);
}

VKAPI_ATTR VkResult VKAPI_CALL queueSubmit(VkQueue queue, std::uint32_t count, const VkSubmitInfo* infos,
                                           VkFence fence) {
    VkQueue real = realQueue(queue);
    const std::lock_guard<std::mutex> lock(gMutex);
    if (gIsLost) {
        return VK_ERROR_DEVICE_LOST;
    }
    static const std::uint32_t refused = number("submit");
    if (isTurn(gSubmissions, refused)) {
        return VK_ERROR_OUT_OF_HOST_MEMORY;
    }
    return REAL(vkQueueSubmit)(real, count, infos, fence);
}

VKAPI_ATTR VkResult VKAPI_CALL queueSubmit2(VkQueue queue, std::uint32_t count, const VkSubmitInfo2* infos,
                                            VkFence fence) {
    VkQueue real = realQueue(queue);
    const std::lock_guard<std::mutex> lock(gMutex);
    return gIsLost ? VK_ERROR_DEVICE_LOST : REAL(vkQueueSubmit2)(real, count, infos, fence);
}

VKAPI_ATTR VkResult VKAPI_CALL queueWaitIdle(VkQueue queue) {
    return gIsLost ? VK_ERROR_DEVICE_LOST : REAL(vkQueueWaitIdle)(realQueue(queue));
}

VKAPI_ATTR VkResult VKAPI_CALL deviceWaitIdle(VkDevice device) {
    const VkResult result = REAL(vkDeviceWaitIdle)(device);
    return gIsLost ? VK_ERROR_DEVICE_LOST : result;
}

VKAPI_ATTR VkResult VKAPI_CALL waitForFences(VkDevice device, std::uint32_t count, const VkFence* fences,
                                             VkBool32 all, std::uint64_t timeout) {
    return gIsLost ? VK_ERROR_DEVICE_LOST : REAL(vkWaitForFences)(device, count, fences, all, timeout);
}

VKAPI_ATTR VkResult VKAPI_CALL getFenceStatus(VkDevice device, VkFence fence) {
    return gIsLost ? VK_ERROR_DEVICE_LOST : REAL(vkGetFenceStatus)(device, fence);
}

}  // namespace

VkQueue realQueue(VkQueue queue) {
    return reinterpret_cast<Queue*>(queue)->real;
}

VkResult submit(VkQueue real, const VkSubmitInfo& info, VkFence fence) {
    const std::lock_guard<std::mutex> lock(gMutex);
    return gIsLost ? VK_ERROR_DEVICE_LOST : REAL(vkQueueSubmit)(real, 1, &info, fence);
}

void loseDevice() {
    gIsLost = true;
}

PFN_vkVoidFunction findQueueHook(const char* name) {
    const Hook hooks[] = {HOOK(vkGetPhysicalDeviceQueueFamilyProperties, getFamilies),
                          HOOK(vkGetPhysicalDeviceQueueFamilyProperties2, getFamilies2),
                          HOOK(vkGetPhysicalDeviceQueueFamilyProperties2KHR, getFamilies2),
                          HOOK(vkGetDeviceQueue, getQueue),
                          HOOK(vkGetDeviceQueue2, getQueue2),
                          HOOK(vkCmdDrawIndirect, drawIndirect),
                          HOOK(vkCmdEndRenderPass, endRenderPass),
                          HOOK(vkDestroyDevice, destroyDevice),
                          HOOK(vkCreateCommandPool, createPool),
                          HOOK(vkQueueSubmit, queueSubmit),
                          HOOK(vkQueueSubmit2, queueSubmit2),
                          HOOK(vkQueueSubmit2KHR, queueSubmit2),
                          HOOK(vkQueueWaitIdle, queueWaitIdle),
                          HOOK(vkDeviceWaitIdle, deviceWaitIdle),
                          HOOK(vkWaitForFences, waitForFences),
                          HOOK(vkGetFenceStatus, getFenceStatus)};
    return findIn(hooks, name);
}

}  // namespace standin
