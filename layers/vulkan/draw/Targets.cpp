#include "vulkan/draw/Targets.h"

#include <exception>
#include <utility>

namespace vulkan {

Targets::Targets(const Gpu& gpu, const SwapchainImages& swapchain, VkRenderPass renderPass) : mGpu(gpu) {
    try {
        create(swapchain, renderPass);
    } catch (const std::exception&) {
        destroy();
        throw;
    }
}

Targets::~Targets() {
    destroy();
}

void Targets::create(const SwapchainImages& swapchain, VkRenderPass renderPass) {
    mImages.resize(swapchain.images.size());
    for (std::size_t i = 0; i < mImages.size(); ++i) {
        Image& image = mImages[i];
        image.views.resize(swapchain.layers);
        image.framebuffers.resize(swapchain.layers);
        for (std::uint32_t layer = 0; layer < swapchain.layers; ++layer) {
            auto view = infoOf<VkImageViewCreateInfo>(VK_STRUCTURE_TYPE_IMAGE_VIEW_CREATE_INFO);
            view.image = swapchain.images[i];
            view.viewType = VK_IMAGE_VIEW_TYPE_2D;
            view.format = swapchain.format;
            view.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, layer, 1};
            check(mGpu.vk.CreateImageView(mGpu.device, &view, nullptr, &image.views[layer]),
                  "vkCreateImageView");
            auto info = infoOf<VkFramebufferCreateInfo>(VK_STRUCTURE_TYPE_FRAMEBUFFER_CREATE_INFO);
            info.renderPass = renderPass;
            info.attachmentCount = 1;
            info.pAttachments = &image.views[layer];
            info.width = swapchain.size.width;
            info.height = swapchain.size.height;
            info.layers = 1;
            check(mGpu.vk.CreateFramebuffer(mGpu.device, &info, nullptr, &image.framebuffers[layer]),
                  "vkCreateFramebuffer");
        }
        const VkSemaphoreCreateInfo info = {VK_STRUCTURE_TYPE_SEMAPHORE_CREATE_INFO, nullptr, 0};
        check(mGpu.vk.CreateSemaphore(mGpu.device, &info, nullptr, &image.drawn), "vkCreateSemaphore");
    }
}

void Targets::destroy() {
    for (const Image& image : mImages) {
        for (VkFramebuffer framebuffer : image.framebuffers) {
            mGpu.vk.DestroyFramebuffer(mGpu.device, framebuffer, nullptr);
        }
        for (VkImageView view : image.views) {
            mGpu.vk.DestroyImageView(mGpu.device, view, nullptr);
        }
        mGpu.vk.DestroySemaphore(mGpu.device, image.drawn, nullptr);
    }
    mImages.clear();
}

std::vector<VkSemaphore> Targets::takeSemaphores() {
    std::vector<VkSemaphore> semaphores;
    semaphores.reserve(mImages.size());
    for (Image& image : mImages) {
        semaphores.push_back(std::exchange(image.drawn, VK_NULL_HANDLE));
    }
    return semaphores;
}

}  // namespace vulkan
