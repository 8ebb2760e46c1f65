#include "vulkan/draw/GlyphImage.h"

#include <cstring>

namespace vulkan {

namespace {

constexpr ImageUse FRESH = {VK_PIPELINE_STAGE_TOP_OF_PIPE_BIT, 0, VK_IMAGE_LAYOUT_UNDEFINED};

VkExtent2D square(int side) {
    return {static_cast<std::uint32_t>(side), static_cast<std::uint32_t>(side)};
}

}  // namespace

GlyphImage::GlyphImage(const Gpu& gpu, int side)
    : mGpu(gpu),
      mSide(side),
      mImage(gpu, VK_FORMAT_R8G8_UNORM, square(side),
             VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT) {}

void GlyphImage::update(drawlist::GlyphCache& glyphs, VkCommandBuffer commands, SubmissionRing& ring) {
    if (glyphs.side() != mSide) {
        throw Failure("the texture of glyphs has another size than its surface asks for");
    }
    if (isUpToDate(glyphs)) {
        return;
    }
    drawlist::GlyphCache::Rows rows = glyphs.takeChanges();
    if (!mHasContents) {
        rows = {0, mSide};
    }
    const auto count = static_cast<std::uint32_t>(rows.end - rows.first);
    const std::size_t size =
        static_cast<std::size_t>(count) * static_cast<std::size_t>(mSide) * drawlist::GlyphCache::CHANNELS;
    Staging& staging = findFree(ring);
    staging.memory.reserve(size);
    std::memcpy(staging.memory.bytes(), glyphs.row(rows.first), size);
    staging.lastUse = ring.current();

    move(mGpu, commands, mImage.handle(), mHasContents ? READ : FRESH, WRITTEN);
    VkBufferImageCopy copy = {};
    copy.imageSubresource = WHOLE_LAYER;
    copy.imageOffset = {0, rows.first, 0};
    copy.imageExtent = {static_cast<std::uint32_t>(mSide), count, 1};
    mGpu.vk.CmdCopyBufferToImage(commands, staging.memory.handle(), mImage.handle(), WRITTEN.layout, 1,
                                 &copy);
    move(mGpu, commands, mImage.handle(), WRITTEN, READ);
    mHasContents = true;
}

GlyphImage::Staging& GlyphImage::findFree(SubmissionRing& ring) {
    for (const std::unique_ptr<Staging>& each : mStagings) {
        if (ring.isDone(each->lastUse)) {
            return *each;
        }
    }
    mStagings.push_back(std::make_unique<Staging>(mGpu));
    return *mStagings.back();
}

}  // namespace vulkan
