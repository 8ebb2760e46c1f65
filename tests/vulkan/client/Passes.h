#pragma once

#include <vulkan/vulkan.h>

#include <array>
#include <cstdint>

namespace client {

/// Render passes of every kind into an image of 256 by 128, in command buffers that are recorded anew in each
/// frame, and one in a command buffer that is recorded once for all.
class Passes {
public:
    /// The device has Vulkan 1.3 with dynamic rendering and synchronization2; it and the pool outlive this.
    /// The pool's command buffers may be reset.
    Passes(VkPhysicalDevice physicalDevice, VkDevice device, VkCommandPool pool);

    /// The queue must be idle, so that nothing is recorded while it is executed.
    void submit(VkQueue queue);

    void destroy();

private:
    void createImage(VkPhysicalDevice physicalDevice);
    void createRenderPass();
    void recordLegacy(VkCommandBuffer commands) const;
    void recordAll();
    void recordDynamic(VkCommandBuffer commands, VkRenderingFlags flags) const;

    VkDevice mDevice;
    std::array<VkCommandBuffer, 2> mCommands{};  ///< recorded once, and in each frame
    VkCommandBuffer mSecondary = VK_NULL_HANDLE;
    VkImage mImage = VK_NULL_HANDLE;
    VkDeviceMemory mMemory = VK_NULL_HANDLE;
    VkImageView mView = VK_NULL_HANDLE;
    VkRenderPass mPass = VK_NULL_HANDLE;
    VkFramebuffer mFramebuffer = VK_NULL_HANDLE;
};

}  // namespace client
