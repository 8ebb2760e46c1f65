#include "vulkan/entry/PresentCopy.h"

#include <algorithm>
#include <cstring>

namespace vulkan {

namespace {

/// Sizes of the structures that a present may carry; 0 for one that is not known.
std::size_t sizeOf(VkStructureType type) {
    switch (type) {
        case VK_STRUCTURE_TYPE_DEVICE_GROUP_PRESENT_INFO_KHR:
            return sizeof(VkDeviceGroupPresentInfoKHR);
        case VK_STRUCTURE_TYPE_DISPLAY_PRESENT_INFO_KHR:
            return sizeof(VkDisplayPresentInfoKHR);
        case VK_STRUCTURE_TYPE_PRESENT_ID_KHR:
            return sizeof(VkPresentIdKHR);
        case VK_STRUCTURE_TYPE_PRESENT_TIMES_INFO_GOOGLE:
            return sizeof(VkPresentTimesInfoGOOGLE);
        case VK_STRUCTURE_TYPE_SWAPCHAIN_PRESENT_FENCE_INFO_EXT:
            return sizeof(VkSwapchainPresentFenceInfoEXT);
        case VK_STRUCTURE_TYPE_SWAPCHAIN_PRESENT_MODE_INFO_EXT:
            return sizeof(VkSwapchainPresentModeInfoEXT);
        default:
            return 0;
    }
}

bool isOfSeveralDevices(const VkDeviceGroupPresentInfoKHR& group) {
    return group.pDeviceMasks != nullptr &&
           std::any_of(group.pDeviceMasks, group.pDeviceMasks + group.swapchainCount,
                       [](std::uint32_t mask) { return mask != 1; });
}

}  // namespace

entry::Obstacle PresentCopy::prepare(const VkPresentInfoKHR& present, std::uint32_t swapchain,
                                     const SwapchainImages& images) {
    mInfo = present;
    entry::Obstacle obstacle = nullptr;
    for (const auto* each = static_cast<const VkBaseInStructure*>(present.pNext);
         each != nullptr && obstacle == nullptr; each = each->pNext) {
        if (each->sType == VK_STRUCTURE_TYPE_PRESENT_REGIONS_KHR) {
            const auto* const regions = reinterpret_cast<const VkPresentRegionsKHR*>(each);
            if (regions->pRegions != nullptr) {
                obstacle = copyUpTo(present, *regions, swapchain, images);
            }
        } else if (each->sType == VK_STRUCTURE_TYPE_DEVICE_GROUP_PRESENT_INFO_KHR &&
                   isOfSeveralDevices(*reinterpret_cast<const VkDeviceGroupPresentInfoKHR*>(each))) {
            obstacle = "its pictures are drawn by several devices";
        }
    }
    return obstacle;
}

/// What stands before the regions in the chain has to be copied too, for it leads to them.
entry::Obstacle PresentCopy::copyUpTo(const VkPresentInfoKHR& present, const VkPresentRegionsKHR& regions,
                                      std::uint32_t swapchain, const SwapchainImages& images) {
    if (regions.swapchainCount > MAX_SWAPCHAINS || images.layers > MAX_LAYERS) {
        return "it presents too many swapchains or layers at once";
    }
    const void** next = &mInfo.pNext;
    std::size_t count = 0;
    for (const auto* each = static_cast<const VkBaseInStructure*>(present.pNext);
         each->sType != VK_STRUCTURE_TYPE_PRESENT_REGIONS_KHR; each = each->pNext) {
        const std::size_t size = sizeOf(each->sType);
        if (size == 0 || size > sizeof(Link) || count == mLinks.size()) {
            return "its presents carry something that is not known";
        }
        Link& link = mLinks[count++];
        std::memcpy(link.bytes.data(), each, size);
        *next = link.bytes.data();
        next = reinterpret_cast<const void**>(link.bytes.data() + offsetof(VkBaseInStructure, pNext));
    }
    mRegions = regions;
    std::copy_n(regions.pRegions, regions.swapchainCount, mRegion.begin());
    if (swapchain < regions.swapchainCount) {
        for (std::uint32_t layer = 0; layer < images.layers; ++layer) {
            mWhole[layer] = {{0, 0}, images.size, layer};
        }
        mRegion[swapchain] = {images.layers, mWhole.data()};
    }
    mRegions.pRegions = mRegion.data();
    *next = &mRegions;
    return nullptr;
}

const VkPresentInfoKHR& PresentCopy::waitingFor(VkSemaphore drawn) {
    mDrawn = drawn;
    mInfo.waitSemaphoreCount = 1;
    mInfo.pWaitSemaphores = &mDrawn;
    return mInfo;
}

}  // namespace vulkan
