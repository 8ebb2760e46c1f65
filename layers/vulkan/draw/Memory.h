#pragma once

#include "vulkan/draw/Gpu.h"

#include <cstddef>
#include <cstdint>

namespace vulkan {

/// A buffer in memory that the CPU writes, or reads, at any time. Its owner knows when the GPU uses it.
class MappedBuffer {
public:
    MappedBuffer(const Gpu& gpu, VkBufferUsageFlags usage) : mGpu(gpu), mUsage(usage) {}
    ~MappedBuffer() { destroy(); }
    MappedBuffer(const MappedBuffer&) = delete;
    MappedBuffer& operator=(const MappedBuffer&) = delete;

    /// Makes room for that many bytes, at the cost of what is in it. Throws Failure; empty then.
    void reserve(std::size_t size);

    VkBuffer handle() const { return mBuffer; }
    std::size_t size() const { return mSize; }
    std::uint8_t* bytes() { return mBytes; }

private:
    void destroy();

    const Gpu& mGpu;
    VkBufferUsageFlags mUsage;
    VkBuffer mBuffer = VK_NULL_HANDLE;
    VkDeviceMemory mMemory = VK_NULL_HANDLE;
    std::size_t mSize = 0;
    std::uint8_t* mBytes = nullptr;
};

/// A colour image of one level in the device's memory, and a view of it.
class DeviceImage {
public:
    /// Throws Failure.
    DeviceImage(const Gpu& gpu, VkFormat format, VkExtent2D size, VkImageUsageFlags usage);
    ~DeviceImage() { destroy(); }
    DeviceImage(const DeviceImage&) = delete;
    DeviceImage& operator=(const DeviceImage&) = delete;

    VkImage handle() const { return mImage; }
    VkImageView view() const { return mView; }
    VkExtent2D size() const { return mSize; }

private:
    void create(VkFormat format, VkImageUsageFlags usage);
    void destroy();

    const Gpu& mGpu;
    VkExtent2D mSize;
    VkImage mImage = VK_NULL_HANDLE;
    VkDeviceMemory mMemory = VK_NULL_HANDLE;
    VkImageView mView = VK_NULL_HANDLE;
};

/// All of a colour image, of its first layer.
inline constexpr VkImageSubresourceRange WHOLE = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
inline constexpr VkImageSubresourceLayers WHOLE_LAYER = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};

/// One side of a barrier.
struct ImageUse {
    VkPipelineStageFlags stages;
    VkAccessFlags access;
    VkImageLayout layout;
};
inline constexpr ImageUse READ = {VK_PIPELINE_STAGE_FRAGMENT_SHADER_BIT, VK_ACCESS_SHADER_READ_BIT,
                                  VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL};  ///< by a shader
inline constexpr ImageUse WRITTEN = {VK_PIPELINE_STAGE_TRANSFER_BIT, VK_ACCESS_TRANSFER_WRITE_BIT,
                                     VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL};  ///< copied to
inline constexpr ImageUse COPIED = {VK_PIPELINE_STAGE_TRANSFER_BIT, VK_ACCESS_TRANSFER_READ_BIT,
                                    VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL};  ///< copied from

/// Makes an image ready for its next use.
void move(const Gpu& gpu, VkCommandBuffer commands, VkImage image, const ImageUse& from, const ImageUse& to,
          const VkImageSubresourceRange& range = WHOLE);

}  // namespace vulkan
