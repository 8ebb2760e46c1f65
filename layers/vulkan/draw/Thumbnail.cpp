#include "vulkan/draw/Thumbnail.h"

#include "vulkan/draw/ColorEncoding.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vulkan {

namespace {

/// Of the texture; what is shown larger than half of it is shown less sharp.
constexpr std::uint32_t SIDE = 512;
constexpr float SCALE = 2.0F;

constexpr VkFormatFeatureFlags FEATURES = VK_FORMAT_FEATURE_BLIT_DST_BIT |
                                          VK_FORMAT_FEATURE_SAMPLED_IMAGE_BIT |
                                          VK_FORMAT_FEATURE_SAMPLED_IMAGE_FILTER_LINEAR_BIT;

/// A format whose values a sampler returns as those that the swapchain's images want to be written.
VkFormat formatFor(const SwapchainImages& swapchain) {
    switch (encodingOf(swapchain.format, swapchain.colorSpace)) {
        case ColorEncoding::LINEAR:
            return isSrgbFormat(swapchain.format) ? VK_FORMAT_R8G8B8A8_SRGB : VK_FORMAT_R16G16B16A16_SFLOAT;
        case ColorEncoding::AS_SRGB:
            return VK_FORMAT_R8G8B8A8_UNORM;
        case ColorEncoding::SCRGB:
        case ColorEncoding::PQ:
            break;
    }
    return VK_FORMAT_R16G16B16A16_SFLOAT;
}

bool canTake(const Gpu& gpu, const SwapchainImages& swapchain) {
    return swapchain.isReadable &&
           gpu.has(swapchain.format,
                   VK_FORMAT_FEATURE_BLIT_SRC_BIT | VK_FORMAT_FEATURE_SAMPLED_IMAGE_FILTER_LINEAR_BIT) &&
           gpu.has(formatFor(swapchain), FEATURES);
}

/// Where it is not possible, a texel that nobody sees takes the texture's place.
VkExtent2D sizeFor(bool isPossible) {
    return isPossible ? VkExtent2D{SIDE, SIDE} : VkExtent2D{1, 1};
}

}  // namespace

Thumbnail::Thumbnail(const Gpu& gpu, const SwapchainImages& swapchain)
    : mGpu(gpu),
      mSurface(swapchain.size),
      mUpright(swapchain.upright()),
      mIsPossible(canTake(gpu, swapchain)),
      mImage(gpu, mIsPossible ? formatFor(swapchain) : VK_FORMAT_R8G8B8A8_UNORM, sizeFor(mIsPossible),
             VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT) {}

void Thumbnail::prepare(VkCommandBuffer commands) {
    if (!mIsPrepared) {
        move(mGpu, commands, mImage.handle(),
             {VK_PIPELINE_STAGE_TOP_OF_PIPE_BIT, 0, VK_IMAGE_LAYOUT_UNDEFINED}, READ);
        mIsPrepared = true;
    }
}

bool Thumbnail::isDue(const drawlist::DrawList& list) const {
    return mIsPossible && list.batch.hasPicture() && list.pictureTimer.isDue();
}

void Thumbnail::take(drawlist::DrawList& list, VkImage image, VkCommandBuffer commands) {
    const raster::Box& box = list.batch.pictureBox();
    const auto side = [](float length) {
        return static_cast<std::uint32_t>(
            raster::toInt(std::round(SCALE * length), 1, static_cast<int>(SIDE)));
    };
    mUsed = {side(box.right - box.left), side(box.bottom - box.top)};
    if (mUpright.size.width != mSurface.width) {
        std::swap(mUsed.width, mUsed.height);
    }
    move(mGpu, commands, mImage.handle(), {READ.stages, 0, VK_IMAGE_LAYOUT_UNDEFINED}, WRITTEN);
    VkImageBlit blit = {};
    blit.srcSubresource = WHOLE_LAYER;
    blit.srcOffsets[1] = {static_cast<std::int32_t>(mSurface.width),
                          static_cast<std::int32_t>(mSurface.height), 1};
    blit.dstSubresource = WHOLE_LAYER;
    blit.dstOffsets[1] = {static_cast<std::int32_t>(mUsed.width), static_cast<std::int32_t>(mUsed.height), 1};
    mGpu.vk.CmdBlitImage(commands, image, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL, mImage.handle(),
                         WRITTEN.layout, 1, &blit, VK_FILTER_LINEAR);
    move(mGpu, commands, mImage.handle(), WRITTEN, READ);
    list.pictureTimer.restart();
    mIsTaken = true;
}

Placing Thumbnail::toTexture(const drawlist::Batch& batch) const {
    const raster::Box& box = batch.pictureBox();
    const glm::vec2 size(box.right - box.left, box.bottom - box.top);
    const glm::vec2 upright(mUpright.size.width, mUpright.size.height);
    const glm::vec2 first(batch.picturePixels().left, batch.picturePixels().top);
    const glm::vec2 shift = (first - glm::vec2(box.left, box.top)) * upright / size;
    const glm::vec2 used(mUsed.width, mUsed.height);
    const glm::vec2 all(mImage.size().width, mImage.size().height);
    return mUpright.toImage.after(upright / size, shift)
        .times(used / all / glm::vec2(mSurface.width, mSurface.height));
}

}  // namespace vulkan
