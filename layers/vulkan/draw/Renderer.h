#pragma once

#include "drawlist/DrawList.h"
#include "entry/Obstacle.h"
#include "vulkan/draw/FrameReader.h"
#include "vulkan/draw/GlyphImage.h"
#include "vulkan/draw/Pipelines.h"
#include "vulkan/draw/SubmissionRing.h"
#include "vulkan/draw/Targets.h"
#include "vulkan/draw/Thumbnail.h"
#include "vulkan/draw/VertexBuffers.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace vulkan {

/// Shows a draw list in the images of one swapchain: one submission a present, at most three drawing calls in
/// it, and nothing uploaded that has not changed. The thread that presents the swapchain; allocates nothing
/// once warm. Before it is destroyed, finish() has to have returned true.
class Renderer {
public:
    /// What one present is to get.
    struct Frame {
        VkQueue queue;
        std::uint32_t image;
        std::uint32_t waitCount;  ///< the semaphores that the present waits for
        const VkSemaphore* waits;
        bool hasOverlay;
        std::string picture;  ///< file to write the frame to; empty for none

        /// Takes the time at which what was submitted before is done; null for none.
        VkCommandBuffer stamp = VK_NULL_HANDLE;
    };

    /// `swapchain` and the others outlive it. `side` is that of the glyph texture. Throws Failure.
    Renderer(const Gpu& gpu, Pipelines& pipelines, const SwapchainImages& swapchain,
             std::uint32_t queueFamily, int side);
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    /// Submits what the frame is to get, waiting on the GPU for its semaphores. `drawn` is what the present
    /// waits for instead then. Returns why nothing was submitted, null when it was. Throws Failure; nothing
    /// was submitted then.
    entry::Obstacle show(drawlist::DrawList& list, const Frame& frame, VkSemaphore& drawn);

    /// In each frame: goes on with what an earlier one has begun. Throws Failure.
    void advance() { mReader.advance(mRing); }

    bool isReading() const { return mReader.isBusy(); }
    const char* readingObstacle() const { return mReader.obstacle(); }

    VkQueue queue() const { return mQueue; }
    SubmissionRing& ring() { return mRing; }

    /// Waits for what was submitted, some seconds at most. False when it is not done.
    bool finish() { return mRing.wait(); }

    /// Afterwards only the destructor may follow.
    std::vector<VkSemaphore> takeSemaphores() { return mTargets.takeSemaphores(); }

private:
    void createSet();
    void record(drawlist::DrawList& list, const Frame& frame, const Recording& what, bool isThumbnailTaken,
                VkCommandBuffer commands);
    void recordDraws(const Recording& what, VkCommandBuffer commands);
    VkSemaphore submit(const Frame& frame, bool isCopied);

    const Gpu& mGpu;
    Pipelines& mPipelines;
    const SwapchainImages& mSwapchain;
    Pipeline mPipeline;
    Targets mTargets;
    SubmissionRing mRing;
    VertexBuffers mVertices;
    GlyphImage mGlyphs;
    int mGlyphSide;
    Thumbnail mThumbnail;
    FrameReader mReader;
    VkDescriptorPool mSetPool = VK_NULL_HANDLE;
    VkDescriptorSet mSet = VK_NULL_HANDLE;
    VkQueue mQueue = VK_NULL_HANDLE;            ///< of the last submission
    std::vector<VkPipelineStageFlags> mStages;  ///< as many as there are semaphores to wait for
};

}  // namespace vulkan
