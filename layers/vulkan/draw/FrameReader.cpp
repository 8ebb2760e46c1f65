#include "vulkan/draw/FrameReader.h"

#include "entry/PictureFile.h"
#include "utils/Log.h"
#include "vulkan/draw/SrgbCodes.h"

#include <unistd.h>

#include <cstring>
#include <new>

namespace vulkan {

namespace {

VkFormat formatFor(ColorEncoding encoding) {
    switch (encoding) {
        case ColorEncoding::AS_SRGB:
            return VK_FORMAT_R8G8B8A8_UNORM;
        case ColorEncoding::LINEAR:
            return VK_FORMAT_R8G8B8A8_SRGB;
        case ColorEncoding::SCRGB:
        case ColorEncoding::PQ:
            break;
    }
    return VK_FORMAT_R16G16B16A16_SFLOAT;
}

}  // namespace

FrameReader::FrameReader(const Gpu& gpu, const SwapchainImages& swapchain)
    : mGpu(gpu),
      mSize(swapchain.size),
      mUpright(swapchain.upright()),
      mEncoding(encodingOf(swapchain.format, swapchain.colorSpace)),
      mFormat(formatFor(mEncoding)),
      mObstacle(!swapchain.isReadable ? "the surface does not let its images be read"
                : !gpu.has(swapchain.format, VK_FORMAT_FEATURE_BLIT_SRC_BIT) ||
                        !gpu.has(mFormat, VK_FORMAT_FEATURE_BLIT_DST_BIT)
                    ? "images of the surface's format cannot be converted"
                    : nullptr),
      mBuffer(gpu, VK_BUFFER_USAGE_TRANSFER_DST_BIT) {}

void FrameReader::read(const std::string& path, VkImage image, VkCommandBuffer commands,
                       SubmissionRing& ring) {
    mPath = path;
    if (!mImage) {
        mImage.emplace(mGpu, mFormat, mSize,
                       VK_IMAGE_USAGE_TRANSFER_SRC_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT);
    }
    const std::size_t bytes = isConverted() ? SrgbCodes::HALF_PIXEL : SrgbCodes::CODE_PIXEL;
    mBuffer.reserve(bytes * mSize.width * mSize.height);
    move(mGpu, commands, mImage->handle(), {VK_PIPELINE_STAGE_TRANSFER_BIT, 0, VK_IMAGE_LAYOUT_UNDEFINED},
         WRITTEN);
    const VkOffset3D end = {static_cast<std::int32_t>(mSize.width), static_cast<std::int32_t>(mSize.height),
                            1};
    VkImageBlit blit = {};
    blit.srcSubresource = WHOLE_LAYER;
    blit.srcOffsets[1] = end;
    blit.dstSubresource = WHOLE_LAYER;
    blit.dstOffsets[1] = end;
    mGpu.vk.CmdBlitImage(commands, image, COPIED.layout, mImage->handle(), WRITTEN.layout, 1, &blit,
                         VK_FILTER_NEAREST);
    move(mGpu, commands, mImage->handle(), WRITTEN, COPIED);
    VkBufferImageCopy copy = {};
    copy.imageSubresource = WHOLE_LAYER;
    copy.imageExtent = {mSize.width, mSize.height, 1};
    mGpu.vk.CmdCopyImageToBuffer(commands, mImage->handle(), COPIED.layout, mBuffer.handle(), 1, &copy);
    auto barrier = infoOf<VkBufferMemoryBarrier>(VK_STRUCTURE_TYPE_BUFFER_MEMORY_BARRIER);
    barrier.srcAccessMask = VK_ACCESS_TRANSFER_WRITE_BIT;
    barrier.dstAccessMask = VK_ACCESS_HOST_READ_BIT;
    barrier.srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    barrier.dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    barrier.buffer = mBuffer.handle();
    barrier.size = VK_WHOLE_SIZE;
    mGpu.vk.CmdPipelineBarrier(commands, VK_PIPELINE_STAGE_TRANSFER_BIT, VK_PIPELINE_STAGE_HOST_BIT, 0, 0,
                               nullptr, 1, &barrier, 0, nullptr);
    mSubmission = ring.current();
}

void FrameReader::advance(SubmissionRing& ring) {
    if (!isBusy() || !ring.isDone(mSubmission)) {
        return;
    }
    mSubmission = 0;
    std::string error = "there is no memory for it";
    try {
        std::vector<std::uint8_t> pixels = uprightPixels();
        const auto [width, height] = mUpright.size;
        error = entry::writePicture(mPath, {static_cast<int>(width), static_cast<int>(height)},
                                    entry::RowOrder::TOP_FIRST, pixels);
    } catch (const std::bad_alloc&) {
        unlink(mPath.c_str());
    }
    if (!error.empty()) {
        KORDANIX_LOG_ERROR("no picture could be written: %s", KORDANIX_LOG_HERE, error.c_str());
    }
}

std::vector<std::uint8_t> FrameReader::uprightPixels() {
    const auto [width, height] = mUpright.size;
    const glm::vec4& axes = mUpright.toImage.axes;
    const std::optional<SrgbCodes> codes =
        isConverted() ? std::make_optional<SrgbCodes>(mEncoding) : std::nullopt;
    std::vector<std::uint8_t> pixels(SrgbCodes::CODE_PIXEL * width * height);
    std::uint8_t* pixel = pixels.data();
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x, pixel += SrgbCodes::CODE_PIXEL) {
            const glm::vec2 middle(static_cast<float>(x) + 0.5F, static_cast<float>(y) + 0.5F);
            const glm::vec2 place =
                mUpright.toImage.origin + glm::vec2(glm::dot(glm::vec2(axes.x, axes.y), middle),
                                                    glm::dot(glm::vec2(axes.z, axes.w), middle));
            const auto column = static_cast<std::size_t>(place.x);
            const auto row = static_cast<std::size_t>(place.y);
            const std::size_t index = row * mSize.width + column;
            if (codes) {
                codes->convert(mBuffer.bytes() + SrgbCodes::HALF_PIXEL * index, pixel);
            } else {
                std::memcpy(pixel, mBuffer.bytes() + SrgbCodes::CODE_PIXEL * index, SrgbCodes::CODE_PIXEL);
            }
        }
    }
    return pixels;
}

void FrameReader::abandon() {
    if (isBusy()) {
        mSubmission = 0;
        unlink(mPath.c_str());
    }
}

}  // namespace vulkan
