#pragma once

#include "entry/Obstacle.h"
#include "vulkan/draw/Swapchain.h"

#include <vulkan/vulkan.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace vulkan {

/// The application's present with what the overlay changes in it: it waits for the overlay, and where it says
/// which regions of a picture have changed, the whole picture has. All else stays as it is.
class PresentCopy {
public:
    /// Why the overlay cannot be in this present; null when it can. `swapchain` is the index of that which
    /// has the overlay, `images` what it is made of.
    entry::Obstacle prepare(const VkPresentInfoKHR& present, std::uint32_t swapchain,
                            const SwapchainImages& images);

    /// After prepare(). Valid until the next one, and as long as the application's present.
    const VkPresentInfoKHR& waitingFor(VkSemaphore drawn);

private:
    static constexpr std::size_t MAX_SWAPCHAINS = 16;
    static constexpr std::size_t MAX_BEFORE = 8;
    static constexpr std::size_t MAX_LAYERS = 8;

    /// Holds any of the structures that are known.
    struct alignas(8) Link {
        std::array<std::byte, 64> bytes;
    };

    entry::Obstacle copyUpTo(const VkPresentInfoKHR& present, const VkPresentRegionsKHR& regions,
                             std::uint32_t swapchain, const SwapchainImages& images);

    VkPresentInfoKHR mInfo = {};
    VkPresentRegionsKHR mRegions = {};
    std::array<VkPresentRegionKHR, MAX_SWAPCHAINS> mRegion = {};
    std::array<VkRectLayerKHR, MAX_LAYERS> mWhole = {};  ///< each layer of the picture
    std::array<Link, MAX_BEFORE> mLinks = {};
    VkSemaphore mDrawn = VK_NULL_HANDLE;
};

}  // namespace vulkan
