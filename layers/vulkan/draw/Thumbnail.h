#pragma once

#include "drawlist/DrawList.h"
#include "vulkan/draw/Memory.h"
#include "vulkan/draw/Swapchain.h"

#include <glm/vec4.hpp>

namespace vulkan {

/// The application's picture, reduced to twice the size that it is shown in, twice a second. Where the
/// swapchain's images cannot be read or scaled there is none.
class Thumbnail {
public:
    /// Throws Failure.
    Thumbnail(const Gpu& gpu, const SwapchainImages& swapchain);

    /// In the first command buffer: makes the texture one that can be read.
    void prepare(VkCommandBuffer commands);

    /// Whether it is shown and due to be taken.
    bool isDue(const drawlist::DrawList& list) const;

    /// Records taking it from an image in the layout of a copy's source.
    void take(drawlist::DrawList& list, VkImage image, VkCommandBuffer commands);

    /// There is one to show.
    bool isTaken() const { return mIsTaken; }

    /// After the first prepare(), which is all that it does.
    bool isPrepared() const { return mIsPrepared; }

    /// From the uv of the picture's vertices to texture coordinates.
    Placing toTexture(const drawlist::Batch& batch) const;

    VkImageView view() const { return mImage.view(); }

private:
    const Gpu& mGpu;
    VkExtent2D mSurface;
    Upright mUpright;
    bool mIsPossible;
    DeviceImage mImage;
    bool mIsPrepared = false;
    bool mIsTaken = false;
    VkExtent2D mUsed = {1, 1};  ///< the part of the texture, from its first texel on
};

}  // namespace vulkan
