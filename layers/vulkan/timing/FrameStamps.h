#pragma once

#include "scene/FrameTimer.h"
#include "vulkan/draw/SubmissionRing.h"
#include "vulkan/timing/SubmissionCopy.h"
#include "vulkan/timing/TimeStampClock.h"

#include <array>
#include <cstdint>

namespace vulkan {

/// Measures how long the GPU works on each frame in one queue: from a time stamp before the first command
/// buffer that the application submits to it after a present, to one before the overlay draws in the next
/// present. Both are taken when all that was submitted before is done, so that frames do not overlap; work in
/// other queues is not counted, and while the GPU waits for it, or for an image, in between, that is.
///
/// Used while the application uses the queue, which it does in one thread at a time. Allocates nothing once
/// warm and never waits: when LONGEST_DELAY frames are unfinished, the next ones are not measured. Lives as
/// long as the device.
class FrameStamps {
public:
    static constexpr std::uint32_t LONGEST_DELAY = 8;  ///< frames; a power of two, so that counts may wrap

    /// Throws Failure.
    FrameStamps(const Gpu& gpu, std::uint32_t queueFamily, const TimeStampClock& clock);
    ~FrameStamps();
    FrameStamps(const FrameStamps&) = delete;
    FrameStamps& operator=(const FrameStamps&) = delete;

    /// After a present: the next submission begins a frame of that name.
    void expect(std::uint32_t frame);

    /// The application's submission with the first stamp in it: `submits` themselves where there is none.
    template <typename Info>
    const Info* begin(std::uint32_t count, const Info* submits);

    /// That submission has failed.
    void abandon() { mIsOpen = false; }

    /// Takes the second stamp: the overlay's submission begins with it. Null when the frame has no first one.
    VkCommandBuffer end();

    /// That has been submitted, as the ring's current one.
    void onSubmitted(const SubmissionRing& ring);

    /// The oldest time that has become known. False when there is none. `ring` is that of the next
    /// submission; what was submitted in another one is forgotten. Throws Failure.
    bool take(SubmissionRing& ring, scene::FrameTimer::Time& time);

private:
    struct Slot {
        std::array<VkCommandBuffer, 2> commands = {};  ///< that take the first stamp, and the second
        std::uint32_t frame = 0;
        std::uint64_t ring = 0;
        std::uint64_t submission = 0;
    };

    void create(std::uint32_t queueFamily);
    void destroy();
    void record(std::uint32_t slot, std::uint32_t stamp);

    const Gpu& mGpu;
    const TimeStampClock mClock;
    VkQueryPool mQueries = VK_NULL_HANDLE;
    VkCommandPool mPool = VK_NULL_HANDLE;
    std::array<Slot, LONGEST_DELAY> mSlots;
    SubmissionCopy mCopy;
    bool mIsExpected = false;
    bool mIsOpen = false;        ///< the first stamp of the current frame has been submitted
    std::uint32_t mStamped = 0;  ///< frames that have both stamps
    std::uint32_t mRead = 0;
};

template <typename Info>
const Info* FrameStamps::begin(std::uint32_t count, const Info* submits) {
    if (!mIsExpected) {
        return submits;
    }
    const Info* const changed = mCopy.withFirst(mSlots[mStamped % LONGEST_DELAY].commands[0], count, submits);
    mIsOpen = changed != submits;
    mIsExpected = !mIsOpen;
    return changed;
}

}  // namespace vulkan
