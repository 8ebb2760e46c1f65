#pragma once

#include "vulkan/draw/Gpu.h"
#include "vulkan/draw/Swapchain.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vulkan {

/// What it takes to draw into the images of a swapchain, and the semaphore of each that its present waits
/// for: used again only when the image is presented again, since it must have been acquired in between.
class Targets {
public:
    /// Throws Failure.
    Targets(const Gpu& gpu, const SwapchainImages& swapchain, VkRenderPass renderPass);
    ~Targets();
    Targets(const Targets&) = delete;
    Targets& operator=(const Targets&) = delete;

    /// The framebuffers of an image, one for each layer.
    const std::vector<VkFramebuffer>& framebuffers(std::size_t image) const {
        return mImages[image].framebuffers;
    }

    VkSemaphore semaphore(std::size_t image) const { return mImages[image].drawn; }

    /// The semaphores, which the caller destroys: presents may still wait for them.
    std::vector<VkSemaphore> takeSemaphores();

private:
    struct Image {
        std::vector<VkImageView> views;
        std::vector<VkFramebuffer> framebuffers;
        VkSemaphore drawn = VK_NULL_HANDLE;
    };

    void create(const SwapchainImages& swapchain, VkRenderPass renderPass);
    void destroy();

    const Gpu& mGpu;
    std::vector<Image> mImages;
};

}  // namespace vulkan
