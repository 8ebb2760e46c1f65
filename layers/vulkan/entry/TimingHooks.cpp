// What the application records and submits, for the GPU's time of frames and for the render passes of a
// capture. The same function comes by up to two names, of which the application may have only one: each calls
// its own.

#include "ostra/PerProcess.h"
#include "vulkan/entry/Hooks.h"
#include "vulkan/entry/Layer.h"

namespace vulkan {

namespace {

Device& deviceOf(void* dispatchable) {
    return *devices().find(keyOf(dispatchable));
}

/// Null unless a capture wants to know of commands.
PassRecorder* listener() {
    Layer* const layer = PassRecorder::isListening() ? platform::PerProcess<Layer>::find() : nullptr;
    return layer == nullptr ? nullptr : &layer->passes();
}

void report(PassRecorder& passes, const Gpu& gpu, VkQueue queue, const VkSubmitInfo& submit) {
    for (std::uint32_t i = 0; i < submit.commandBufferCount; ++i) {
        passes.onSubmitted(gpu, queue, submit.pCommandBuffers[i]);
    }
}

void report(PassRecorder& passes, const Gpu& gpu, VkQueue queue, const VkSubmitInfo2& submit) {
    for (std::uint32_t i = 0; i < submit.commandBufferInfoCount; ++i) {
        passes.onSubmitted(gpu, queue, submit.pCommandBufferInfos[i].commandBuffer);
    }
}

template <auto NEXT, typename Info>
VKAPI_ATTR VkResult VKAPI_CALL queueSubmit(VkQueue queue, std::uint32_t count, const Info* submits,
                                           VkFence fence) {
    Device& device = deviceOf(queue);
    PassRecorder* const passes = listener();
    for (std::uint32_t i = 0; passes != nullptr && i < count; ++i) {
        report(*passes, device.gpu(), queue, submits[i]);
    }
    FrameStamps* const stamps = device.expectingStamps(queue);
    if (stamps == nullptr) {
        return (device.gpu().vk.*NEXT)(queue, count, submits, fence);
    }
    const Info* const changed = stamps->begin(count, submits);
    const VkResult result = (device.gpu().vk.*NEXT)(queue, count, changed, fence);
    if (result != VK_SUCCESS) {
        stamps->abandon();
    }
    if (changed != submits) {
        device.forgetExpectation();
    }
    return result;
}

VKAPI_ATTR VkResult VKAPI_CALL beginCommandBuffer(VkCommandBuffer commands,
                                                  const VkCommandBufferBeginInfo* info) {
    const VkResult result = deviceOf(commands).gpu().vk.BeginCommandBuffer(commands, info);
    if (PassRecorder* const passes = result == VK_SUCCESS ? listener() : nullptr) {
        passes->onBegun(commands);
    }
    return result;
}

template <typename Info>
void beginPass(PassRecorder& passes, Device& device, VkCommandBuffer commands, const Info& info,
               VkRenderingFlags flags = 0) {
    PassTargets targets;
    try {
        targets = device.attachments().targetsOf(info);
    } catch (const std::bad_alloc&) {
        // They are not known.
    }
    passes.beginPass(device.gpu(), commands, std::move(targets), flags);
}

VKAPI_ATTR void VKAPI_CALL beginRenderPass(VkCommandBuffer commands, const VkRenderPassBeginInfo* info,
                                           VkSubpassContents contents) {
    Device& device = deviceOf(commands);
    if (PassRecorder* const passes = listener()) {
        beginPass(*passes, device, commands, *info);
    }
    device.gpu().vk.CmdBeginRenderPass(commands, info, contents);
}

template <PFN_vkCmdBeginRenderPass2 DeviceFunctions::*NEXT>
VKAPI_ATTR void VKAPI_CALL beginRenderPass2(VkCommandBuffer commands, const VkRenderPassBeginInfo* info,
                                            const VkSubpassBeginInfo* subpass) {
    Device& device = deviceOf(commands);
    if (PassRecorder* const passes = listener()) {
        beginPass(*passes, device, commands, *info);
    }
    (device.gpu().vk.*NEXT)(commands, info, subpass);
}

template <PFN_vkCmdBeginRendering DeviceFunctions::*NEXT>
VKAPI_ATTR void VKAPI_CALL beginRendering(VkCommandBuffer commands, const VkRenderingInfo* info) {
    Device& device = deviceOf(commands);
    if (PassRecorder* const passes = listener()) {
        beginPass(*passes, device, commands, *info, info->flags);
    }
    (device.gpu().vk.*NEXT)(commands, info);
}

/// The end of any kind of pass.
template <auto NEXT, typename... Info>
VKAPI_ATTR void VKAPI_CALL endPass(VkCommandBuffer commands, Info... info) {
    Device& device = deviceOf(commands);
    (device.gpu().vk.*NEXT)(commands, info...);
    if (PassRecorder* const passes = listener()) {
        passes->endPass(device.gpu(), commands);
    }
}

VKAPI_ATTR void VKAPI_CALL executeCommands(VkCommandBuffer commands, std::uint32_t count,
                                           const VkCommandBuffer* executed) {
    deviceOf(commands).gpu().vk.CmdExecuteCommands(commands, count, executed);
    if (PassRecorder* const passes = listener()) {
        passes->onExecuted(commands, count, executed);
    }
}

template <auto NEXT, typename Info>
VKAPI_ATTR VkResult VKAPI_CALL createRenderPass(VkDevice device, const Info* info,
                                                const VkAllocationCallbacks* allocator, VkRenderPass* made) {
    Device& record = deviceOf(device);
    const VkResult result = (record.gpu().vk.*NEXT)(device, info, allocator, made);
    if (result == VK_SUCCESS) {
        record.attachments().addRenderPass(*made, *info);
    }
    return result;
}

VKAPI_ATTR VkResult VKAPI_CALL createFramebuffer(VkDevice device, const VkFramebufferCreateInfo* info,
                                                 const VkAllocationCallbacks* allocator,
                                                 VkFramebuffer* made) {
    Device& record = deviceOf(device);
    const VkResult result = record.gpu().vk.CreateFramebuffer(device, info, allocator, made);
    if (result == VK_SUCCESS) {
        record.attachments().addFramebuffer(*made, *info);
    }
    return result;
}

/// Of the images that may be attachments: what a dynamic pass draws into is told by nothing else.
VKAPI_ATTR VkResult VKAPI_CALL createImage(VkDevice device, const VkImageCreateInfo* info,
                                           const VkAllocationCallbacks* allocator, VkImage* made) {
    constexpr VkImageUsageFlags ATTACHMENT =
        VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_DEPTH_STENCIL_ATTACHMENT_BIT;
    Device& record = deviceOf(device);
    const VkResult result = record.gpu().vk.CreateImage(device, info, allocator, made);
    if (result == VK_SUCCESS && (info->usage & ATTACHMENT) != 0) {
        record.attachments().addImage(*made, {info->extent.width, info->extent.height});
    }
    return result;
}

VKAPI_ATTR VkResult VKAPI_CALL createImageView(VkDevice device, const VkImageViewCreateInfo* info,
                                               const VkAllocationCallbacks* allocator, VkImageView* made) {
    Device& record = deviceOf(device);
    const VkResult result = record.gpu().vk.CreateImageView(device, info, allocator, made);
    if (result == VK_SUCCESS) {
        record.attachments().addView(*made, *info);
    }
    return result;
}

/// Forgotten first: another thread may get the same handle at once.
template <auto NEXT, auto FORGET, typename Handle>
VKAPI_ATTR void VKAPI_CALL destroy(VkDevice device, Handle handle, const VkAllocationCallbacks* allocator) {
    Device& record = deviceOf(device);
    (record.attachments().*FORGET)(handle);
    (record.gpu().vk.*NEXT)(device, handle, allocator);
}

}  // namespace

PFN_vkVoidFunction findTimingHook(const char* name) {
    using Vk = DeviceFunctions;
    using Records = AttachmentRecords;
    static const Hook HOOKS[] = {
        {"vkQueueSubmit", erase(queueSubmit<&Vk::QueueSubmit, VkSubmitInfo>)},
        {"vkQueueSubmit2", erase(queueSubmit<&Vk::QueueSubmit2, VkSubmitInfo2>)},
        {"vkQueueSubmit2KHR", erase(queueSubmit<&Vk::QueueSubmit2KHR, VkSubmitInfo2>)},
        {"vkBeginCommandBuffer", erase(beginCommandBuffer)},
        {"vkCmdBeginRenderPass", erase(beginRenderPass)},
        {"vkCmdBeginRenderPass2", erase(beginRenderPass2<&Vk::CmdBeginRenderPass2>)},
        {"vkCmdBeginRenderPass2KHR", erase(beginRenderPass2<&Vk::CmdBeginRenderPass2KHR>)},
        {"vkCmdBeginRendering", erase(beginRendering<&Vk::CmdBeginRendering>)},
        {"vkCmdBeginRenderingKHR", erase(beginRendering<&Vk::CmdBeginRenderingKHR>)},
        {"vkCmdEndRenderPass", erase(endPass<&Vk::CmdEndRenderPass>)},
        {"vkCmdEndRenderPass2", erase(endPass<&Vk::CmdEndRenderPass2, const VkSubpassEndInfo*>)},
        {"vkCmdEndRenderPass2KHR", erase(endPass<&Vk::CmdEndRenderPass2KHR, const VkSubpassEndInfo*>)},
        {"vkCmdEndRendering", erase(endPass<&Vk::CmdEndRendering>)},
        {"vkCmdEndRenderingKHR", erase(endPass<&Vk::CmdEndRenderingKHR>)},
        {"vkCmdExecuteCommands", erase(executeCommands)},
        {"vkCreateRenderPass", erase(createRenderPass<&Vk::CreateRenderPass, VkRenderPassCreateInfo>)},
        {"vkCreateRenderPass2", erase(createRenderPass<&Vk::CreateRenderPass2, VkRenderPassCreateInfo2>)},
        {"vkCreateRenderPass2KHR",
         erase(createRenderPass<&Vk::CreateRenderPass2KHR, VkRenderPassCreateInfo2>)},
        {"vkDestroyRenderPass",
         erase(destroy<&Vk::DestroyRenderPass, &Records::removeRenderPass, VkRenderPass>)},
        {"vkCreateFramebuffer", erase(createFramebuffer)},
        {"vkDestroyFramebuffer",
         erase(destroy<&Vk::DestroyFramebuffer, &Records::removeFramebuffer, VkFramebuffer>)},
        {"vkCreateImage", erase(createImage)},
        {"vkDestroyImage", erase(destroy<&Vk::DestroyImage, &Records::removeImage, VkImage>)},
        {"vkCreateImageView", erase(createImageView)},
        {"vkDestroyImageView", erase(destroy<&Vk::DestroyImageView, &Records::removeView, VkImageView>)}};
    return findHook(HOOKS, name);
}

}  // namespace vulkan
