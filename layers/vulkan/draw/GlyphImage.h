#pragma once

#include "drawlist/GlyphCache.h"
#include "vulkan/draw/Memory.h"
#include "vulkan/draw/SubmissionRing.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace vulkan {

/// The texture of glyphs, of which only changed rows are uploaded.
class GlyphImage {
public:
    /// Throws Failure.
    GlyphImage(const Gpu& gpu, int side);

    /// Records the upload of what has changed in the cache, for the submission that has begun. Throws
    /// Failure.
    void update(drawlist::GlyphCache& glyphs, VkCommandBuffer commands, SubmissionRing& ring);

    /// update() has nothing to do.
    bool isUpToDate(const drawlist::GlyphCache& glyphs) const { return mHasContents && !glyphs.isChanged(); }

    VkImageView view() const { return mImage.view(); }

private:
    struct Staging {
        explicit Staging(const Gpu& gpu) : memory(gpu, VK_BUFFER_USAGE_TRANSFER_SRC_BIT) {}
        MappedBuffer memory;
        std::uint64_t lastUse = 0;
    };

    Staging& findFree(SubmissionRing& ring);

    const Gpu& mGpu;
    int mSide;
    DeviceImage mImage;
    bool mHasContents = false;
    std::vector<std::unique_ptr<Staging>> mStagings;
};

}  // namespace vulkan
