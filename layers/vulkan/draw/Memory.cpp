#include "vulkan/draw/Memory.h"

#include <utility>

namespace vulkan {

namespace {

/// Throws Failure when the device has no memory of that kind.
VkDeviceMemory allocate(const Gpu& gpu, const VkMemoryRequirements& needs, VkMemoryPropertyFlags kind) {
    for (std::uint32_t type = 0; type < gpu.memory.memoryTypeCount; ++type) {
        const VkMemoryPropertyFlags flags = gpu.memory.memoryTypes[type].propertyFlags;
        if ((needs.memoryTypeBits >> type & 1U) != 0 && (flags & kind) == kind) {
            VkMemoryAllocateInfo info = {VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO, nullptr, needs.size, type};
            VkDeviceMemory memory = VK_NULL_HANDLE;
            check(gpu.vk.AllocateMemory(gpu.device, &info, nullptr, &memory), "vkAllocateMemory");
            return memory;
        }
    }
    throw Failure("the device has no memory of the kind that is needed");
}

}  // namespace

void MappedBuffer::reserve(std::size_t size) {
    if (size <= mSize) {
        return;
    }
    destroy();
    try {
        auto info = infoOf<VkBufferCreateInfo>(VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO);
        info.size = size;
        info.usage = mUsage;
        check(mGpu.vk.CreateBuffer(mGpu.device, &info, nullptr, &mBuffer), "vkCreateBuffer");
        VkMemoryRequirements needs = {};
        mGpu.vk.GetBufferMemoryRequirements(mGpu.device, mBuffer, &needs);
        mMemory =
            allocate(mGpu, needs, VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT | VK_MEMORY_PROPERTY_HOST_COHERENT_BIT);
        check(mGpu.vk.BindBufferMemory(mGpu.device, mBuffer, mMemory, 0), "vkBindBufferMemory");
        void* bytes = nullptr;
        check(mGpu.vk.MapMemory(mGpu.device, mMemory, 0, VK_WHOLE_SIZE, 0, &bytes), "vkMapMemory");
        mBytes = static_cast<std::uint8_t*>(bytes);
        mSize = size;
    } catch (const Failure&) {
        destroy();
        throw;
    }
}

void MappedBuffer::destroy() {
    mGpu.vk.DestroyBuffer(mGpu.device, std::exchange(mBuffer, VK_NULL_HANDLE), nullptr);
    mGpu.vk.FreeMemory(mGpu.device, std::exchange(mMemory, VK_NULL_HANDLE), nullptr);
    mSize = 0;
    mBytes = nullptr;
}

DeviceImage::DeviceImage(const Gpu& gpu, VkFormat format, VkExtent2D size, VkImageUsageFlags usage)
    : mGpu(gpu), mSize(size) {
    try {
        create(format, usage);
    } catch (const Failure&) {
        destroy();
        throw;
    }
}

void DeviceImage::create(VkFormat format, VkImageUsageFlags usage) {
    auto info = infoOf<VkImageCreateInfo>(VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO);
    info.imageType = VK_IMAGE_TYPE_2D;
    info.format = format;
    info.extent = {mSize.width, mSize.height, 1};
    info.mipLevels = 1;
    info.arrayLayers = 1;
    info.samples = VK_SAMPLE_COUNT_1_BIT;
    info.tiling = VK_IMAGE_TILING_OPTIMAL;
    info.usage = usage;
    check(mGpu.vk.CreateImage(mGpu.device, &info, nullptr, &mImage), "vkCreateImage");
    VkMemoryRequirements needs = {};
    mGpu.vk.GetImageMemoryRequirements(mGpu.device, mImage, &needs);
    mMemory = allocate(mGpu, needs, VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT);
    check(mGpu.vk.BindImageMemory(mGpu.device, mImage, mMemory, 0), "vkBindImageMemory");
    if ((usage & VK_IMAGE_USAGE_SAMPLED_BIT) == 0) {
        return;
    }
    auto view = infoOf<VkImageViewCreateInfo>(VK_STRUCTURE_TYPE_IMAGE_VIEW_CREATE_INFO);
    view.image = mImage;
    view.viewType = VK_IMAGE_VIEW_TYPE_2D;
    view.format = format;
    view.subresourceRange = WHOLE;
    check(mGpu.vk.CreateImageView(mGpu.device, &view, nullptr, &mView), "vkCreateImageView");
}

void DeviceImage::destroy() {
    mGpu.vk.DestroyImageView(mGpu.device, std::exchange(mView, VK_NULL_HANDLE), nullptr);
    mGpu.vk.DestroyImage(mGpu.device, std::exchange(mImage, VK_NULL_HANDLE), nullptr);
    mGpu.vk.FreeMemory(mGpu.device, std::exchange(mMemory, VK_NULL_HANDLE), nullptr);
}

void move(const Gpu& gpu, VkCommandBuffer commands, VkImage image, const ImageUse& from, const ImageUse& to,
          const VkImageSubresourceRange& range) {
    auto barrier = infoOf<VkImageMemoryBarrier>(VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER);
    barrier.srcAccessMask = from.access;
    barrier.dstAccessMask = to.access;
    barrier.oldLayout = from.layout;
    barrier.newLayout = to.layout;
    barrier.srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    barrier.dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    barrier.image = image;
    barrier.subresourceRange = range;
    gpu.vk.CmdPipelineBarrier(commands, from.stages, to.stages, 0, 0, nullptr, 0, nullptr, 1, &barrier);
}

}  // namespace vulkan
