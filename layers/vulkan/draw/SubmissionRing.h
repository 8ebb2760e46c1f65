#pragma once

#include "vulkan/draw/Gpu.h"
#include "vulkan/draw/Recording.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vulkan {

/// The command buffers of one swapchain's overlay: each is used again when the GPU has done it, and nobody
/// waits for that; as it was recorded, where the same is wanted again. Those of one queue are done in their
/// order.
class SubmissionRing {
public:
    /// Throws Failure.
    SubmissionRing(const Gpu& gpu, std::uint32_t queueFamily);
    ~SubmissionRing();
    SubmissionRing(const SubmissionRing&) = delete;
    SubmissionRing& operator=(const SubmissionRing&) = delete;

    /// A command buffer for what is wanted; of nothing, for a frame that does not come again. It records,
    /// unless isRecorded(). Null when the GPU is too far behind. Throws Failure.
    VkCommandBuffer begin(const std::optional<Recording>& wanted);

    /// What begin() has returned was recorded before, and is ready.
    bool isRecorded() const { return mIsRecorded; }

    /// Ends that and submits it after `first`, which may be null; `submission` comes without them. Throws
    /// Failure; nothing is submitted then.
    void submit(VkQueue queue, VkSubmitInfo submission, VkCommandBuffer first);

    /// Which ring of the process it is; no other one has, or had, that number.
    std::uint64_t number() const { return mNumber; }

    /// The number of the submission that begin() has begun, counted from 1.
    std::uint64_t current() const { return mCurrent; }

    /// Whether the GPU has done that submission. Of 0, it has. Throws Failure when the device is lost.
    bool isDone(std::uint64_t submission);

    bool isIdle() { return isDone(mSubmitted); }

    /// Waits until all is done, but a few seconds at most: a program may have left a semaphore that nobody
    /// signals. False when it is not. A lost device is done with everything.
    bool wait();

private:
    struct Slot {
        VkCommandBuffer commands = VK_NULL_HANDLE;
        VkFence fence = VK_NULL_HANDLE;
        std::uint64_t submission = 0;  ///< 0: not in use
        std::uint64_t lastUse = 0;
        std::optional<Recording> recording;
    };

    bool isFree(Slot& slot);
    Slot* choose(const std::optional<Recording>& wanted);
    Slot create();

    const Gpu& mGpu;
    const std::uint64_t mNumber;
    VkCommandPool mPool = VK_NULL_HANDLE;
    std::vector<Slot> mSlots;
    Slot* mChosen = nullptr;
    bool mIsRecorded = false;
    std::optional<Recording> mWanted;  ///< what the chosen one records
    std::uint64_t mCurrent = 0;
    std::uint64_t mSubmitted = 0;
    std::uint64_t mDone = 0;
};

}  // namespace vulkan
