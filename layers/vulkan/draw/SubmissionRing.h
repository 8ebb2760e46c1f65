#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vulkan/draw/Gpu.h"

namespace vulkan {

/// The command buffers of one swapchain's overlay, in a ring: each is used again when the GPU has done it,
/// and nobody waits for that. Those of one queue are done in their order.
class SubmissionRing {
public:
    /// Throws Failure.
    SubmissionRing(const Gpu& gpu, std::uint32_t queueFamily);
    ~SubmissionRing();
    SubmissionRing(const SubmissionRing&) = delete;
    SubmissionRing& operator=(const SubmissionRing&) = delete;

    /// A command buffer that records; null when the GPU is too far behind. Throws Failure.
    VkCommandBuffer begin();

    /// Ends that and submits it; `submission` comes without it. Throws Failure; nothing is submitted then.
    void submit(VkQueue queue, VkSubmitInfo submission);

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
    };

    bool isFree(Slot& slot);
    Slot create();

    const Gpu& mGpu;
    const std::uint64_t mNumber;
    VkCommandPool mPool = VK_NULL_HANDLE;
    std::vector<Slot> mSlots;
    std::size_t mNext = 0;
    std::uint64_t mCurrent = 0;
    std::uint64_t mSubmitted = 0;
    std::uint64_t mDone = 0;
};

}  // namespace vulkan
