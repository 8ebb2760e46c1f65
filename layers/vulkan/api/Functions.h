#pragma once

#include <vulkan/vk_layer.h>
#include <vulkan/vulkan.h>

#include <stdexcept>
#include <string>

namespace vulkan {

#define VULKAN_INSTANCE_FUNCTIONS(DO)          \
    DO(DestroyInstance)                        \
    DO(EnumerateDeviceExtensionProperties)     \
    DO(GetPhysicalDeviceFormatProperties)      \
    DO(GetPhysicalDeviceImageFormatProperties) \
    DO(GetPhysicalDeviceMemoryProperties)      \
    DO(GetPhysicalDeviceProperties)            \
    DO(GetPhysicalDeviceQueueFamilyProperties)

#define VULKAN_DEVICE_FUNCTIONS(DO) \
    DO(AllocateCommandBuffers)      \
    DO(AllocateDescriptorSets)      \
    DO(AllocateMemory)              \
    DO(BeginCommandBuffer)          \
    DO(BindBufferMemory)            \
    DO(BindImageMemory)             \
    DO(CmdBeginRenderPass)          \
    DO(CmdBindDescriptorSets)       \
    DO(CmdBindPipeline)             \
    DO(CmdBindVertexBuffers)        \
    DO(CmdBlitImage)                \
    DO(CmdCopyBufferToImage)        \
    DO(CmdCopyImageToBuffer)        \
    DO(CmdDrawIndirect)             \
    DO(CmdEndRenderPass)            \
    DO(CmdExecuteCommands)          \
    DO(CmdPipelineBarrier)          \
    DO(CmdPushConstants)            \
    DO(CmdResetQueryPool)           \
    DO(CmdSetScissor)               \
    DO(CmdSetViewport)              \
    DO(CmdWriteTimestamp)           \
    DO(CreateBuffer)                \
    DO(CreateCommandPool)           \
    DO(CreateDescriptorPool)        \
    DO(CreateDescriptorSetLayout)   \
    DO(CreateFence)                 \
    DO(CreateFramebuffer)           \
    DO(CreateGraphicsPipelines)     \
    DO(CreateImage)                 \
    DO(CreateImageView)             \
    DO(CreatePipelineLayout)        \
    DO(CreateQueryPool)             \
    DO(CreateRenderPass)            \
    DO(CreateSampler)               \
    DO(CreateSemaphore)             \
    DO(CreateShaderModule)          \
    DO(DestroyBuffer)               \
    DO(DestroyCommandPool)          \
    DO(DestroyDescriptorPool)       \
    DO(DestroyDescriptorSetLayout)  \
    DO(DestroyDevice)               \
    DO(DestroyFence)                \
    DO(DestroyFramebuffer)          \
    DO(DestroyImage)                \
    DO(DestroyImageView)            \
    DO(DestroyPipeline)             \
    DO(DestroyPipelineLayout)       \
    DO(DestroyQueryPool)            \
    DO(DestroyRenderPass)           \
    DO(DestroySampler)              \
    DO(DestroySemaphore)            \
    DO(DestroyShaderModule)         \
    DO(EndCommandBuffer)            \
    DO(FreeMemory)                  \
    DO(GetBufferMemoryRequirements) \
    DO(GetDeviceQueue)              \
    DO(GetFenceStatus)              \
    DO(GetImageMemoryRequirements)  \
    DO(GetQueryPoolResults)         \
    DO(MapMemory)                   \
    DO(QueueSubmit)                 \
    DO(ResetFences)                 \
    DO(UpdateDescriptorSets)        \
    DO(WaitForFences)

/// Of extensions or newer versions, null where the application did not ask for them.
#define VULKAN_OPTIONAL_INSTANCE_FUNCTIONS(DO)       \
    DO(GetPhysicalDeviceCalibrateableTimeDomainsEXT) \
    DO(GetPhysicalDeviceSurfaceCapabilitiesKHR)
#define VULKAN_OPTIONAL_DEVICE_FUNCTIONS(DO) \
    DO(CmdBeginRenderPass2)                  \
    DO(CmdBeginRenderPass2KHR)               \
    DO(CmdBeginRendering)                    \
    DO(CmdBeginRenderingKHR)                 \
    DO(CmdEndRenderPass2)                    \
    DO(CmdEndRenderPass2KHR)                 \
    DO(CmdEndRendering)                      \
    DO(CmdEndRenderingKHR)                   \
    DO(CreateRenderPass2)                    \
    DO(CreateRenderPass2KHR)                 \
    DO(CreateSharedSwapchainsKHR)            \
    DO(CreateSwapchainKHR)                   \
    DO(DestroySwapchainKHR)                  \
    DO(GetCalibratedTimestampsEXT)           \
    DO(GetDeviceQueue2)                      \
    DO(GetSwapchainImagesKHR)                \
    DO(QueuePresentKHR)                      \
    DO(QueueSubmit2)                         \
    DO(QueueSubmit2KHR)

#define VULKAN_MEMBER(name) PFN_vk##name name = nullptr;

/// The functions of one instance, below this layer.
struct InstanceFunctions {
    PFN_vkGetInstanceProcAddr GetInstanceProcAddr = nullptr;
    VULKAN_INSTANCE_FUNCTIONS(VULKAN_MEMBER)
    VULKAN_OPTIONAL_INSTANCE_FUNCTIONS(VULKAN_MEMBER)

    /// False when one that is not optional is missing.
    bool load(VkInstance instance, PFN_vkGetInstanceProcAddr lookUp);
};

/// Those of one device.
struct DeviceFunctions {
    PFN_vkGetDeviceProcAddr GetDeviceProcAddr = nullptr;
    VULKAN_DEVICE_FUNCTIONS(VULKAN_MEMBER)
    VULKAN_OPTIONAL_DEVICE_FUNCTIONS(VULKAN_MEMBER)

    bool load(VkDevice device, PFN_vkGetDeviceProcAddr lookUp);
};

#undef VULKAN_MEMBER

/// A structure of a type that says nothing else yet.
template <typename Info>
Info infoOf(VkStructureType type) {
    Info info = {};
    info.sType = type;
    return info;
}

/// A call of ours has failed.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws Failure unless it is VK_SUCCESS. `call` is the function's name.
inline void check(VkResult result, const char* call) {
    if (result != VK_SUCCESS) {
        throw Failure(std::string(call) + " failed (" + std::to_string(result) + ")");
    }
}

}  // namespace vulkan
