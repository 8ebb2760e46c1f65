#include "Swapchains.h"

#include <cstdio>
#include <fstream>
#include <vector>

namespace standin {

VkResult writePicture(VkDevice device, VkQueue real, VkImage image, const VkSwapchainCreateInfoKHR& info,
                      const VkPresentInfoKHR& present, const std::string& file) {
    const VkDeviceSize pixel = info.imageFormat == VK_FORMAT_R16G16B16A16_SFLOAT ? 8 : 4;
    const VkExtent2D extent = info.imageExtent;
    const VkDeviceSize size = pixel * extent.width * extent.height * info.imageArrayLayers;
    VkBufferCreateInfo bufferInfo = {VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO,
                                     nullptr,
                                     0,
                                     size,
                                     VK_BUFFER_USAGE_TRANSFER_DST_BIT,
                                     VK_SHARING_MODE_EXCLUSIVE,
                                     0,
                                     nullptr};
    VkBuffer buffer = VK_NULL_HANDLE;
    REAL(vkCreateBuffer)(device, &bufferInfo, nullptr, &buffer);
    VkMemoryRequirements needs = {};
    REAL(vkGetBufferMemoryRequirements)(device, buffer, &needs);
    const VkMemoryAllocateInfo allocation = {VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO, nullptr, needs.size, 0};
    VkDeviceMemory memory = VK_NULL_HANDLE;
    REAL(vkAllocateMemory)(device, &allocation, nullptr, &memory);
    REAL(vkBindBufferMemory)(device, buffer, memory, 0);

    const VkCommandPoolCreateInfo poolInfo = {VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO, nullptr, 0, 0};
    VkCommandPool pool = VK_NULL_HANDLE;
    REAL(vkCreateCommandPool)(device, &poolInfo, nullptr, &pool);
    const VkCommandBufferAllocateInfo commandInfo = {VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO, nullptr,
                                                     pool, VK_COMMAND_BUFFER_LEVEL_PRIMARY, 1};
    VkCommandBuffer commands = VK_NULL_HANDLE;
    REAL(vkAllocateCommandBuffers)(device, &commandInfo, &commands);
    const VkCommandBufferBeginInfo begin = {VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO, nullptr, 0, nullptr};
    REAL(vkBeginCommandBuffer)(commands, &begin);
    VkBufferImageCopy copy = {};
    copy.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, info.imageArrayLayers};
    copy.imageExtent = {extent.width, extent.height, 1};
    REAL(vkCmdCopyImageToBuffer)(commands, image, VK_IMAGE_LAYOUT_GENERAL, buffer, 1, &copy);
    REAL(vkEndCommandBuffer)(commands);
    const std::vector<VkPipelineStageFlags> stages(present.waitSemaphoreCount,
                                                   VK_PIPELINE_STAGE_ALL_COMMANDS_BIT);
    const VkSubmitInfo submission = {VK_STRUCTURE_TYPE_SUBMIT_INFO,
                                     nullptr,
                                     present.waitSemaphoreCount,
                                     present.pWaitSemaphores,
                                     stages.data(),
                                     1,
                                     &commands,
                                     0,
                                     nullptr};
    VkResult result = submit(real, submission, VK_NULL_HANDLE);
    REAL(vkQueueWaitIdle)(real);
    void* bytes = nullptr;
    REAL(vkMapMemory)(device, memory, 0, VK_WHOLE_SIZE, 0, &bytes);
    std::ofstream out(file + ".part", std::ios::binary);
    out << extent.width << ' ' << extent.height << ' ' << info.imageArrayLayers << ' ' << info.imageFormat
        << ' ' << pixel << '\n';
    out.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    out.close();
    std::rename((file + ".part").c_str(), file.c_str());
    REAL(vkDestroyCommandPool)(device, pool, nullptr);
    REAL(vkDestroyBuffer)(device, buffer, nullptr);
    REAL(vkFreeMemory)(device, memory, nullptr);
    return result;
}

}  // namespace standin
