#pragma once

#include <ostra/Ostra.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace platform {

/// Frames on their way from the thread that dumps them to the one that writes them. All memory is taken when
/// the queue is made; neither side ever waits. One thread at a time pushes, one thread reads.
class FrameQueue {
public:
    /// Bounds of what waits at a time: 17 seconds at 60 frames per second, and their render passes together.
    /// Powers of two, so that the running counts may wrap.
    static constexpr std::uint32_t MAX_FRAMES = 1024;
    static constexpr std::uint32_t MAX_PASSES = 16384;

    /// A frame without its values and passes, which are to be had from the queue.
    struct Frame {
        std::uint64_t frameNumber;
        std::int64_t timestampMs;
        std::int64_t renderPassFrameId;
        float frameDuration;
        std::uint32_t valueCount;  ///< how many of the values the frame really had
        std::uint32_t passCount;
        std::uint32_t firstPass;
    };

    explicit FrameQueue(std::size_t valuesPerFrame, std::size_t extrasPerFrame = 0);

    /// Copies the frame, with at most as many values as the queue was made for. False, and the frame is
    /// dropped, when there is no room for it.
    bool push(const Ostra::FrameDump& dump, const std::vector<double>& extraValues = {});

    /// Whether it is time to read. Any thread.
    bool isHalfFull() const;

    /// The oldest frame, or null. Stays valid until pop().
    const Frame* front() const;

    /// Values and render pass of the oldest frame.
    const Ostra::DumpValue& value(std::size_t index) const;
    double extraValue(std::size_t index) const;
    const Ostra::DumpRenderpassValue& pass(std::uint32_t index) const;

    /// Forgets the oldest frame.
    void pop();

private:
    std::size_t mValuesPerFrame;
    std::vector<Frame> mFrames;
    std::vector<Ostra::DumpValue> mValues;
    std::size_t mExtrasPerFrame;
    std::vector<double> mExtras;  ///< NaN where a frame has none
    std::vector<Ostra::DumpRenderpassValue> mPasses;

    // Running counts. Each is advanced by one side with release order, after that side is done with the
    // slots, and read by the other with acquire order before it touches them.
    std::atomic<std::uint32_t> mFramesWritten{0};
    std::atomic<std::uint32_t> mFramesRead{0};
    std::atomic<std::uint32_t> mPassesWritten{0};
    std::atomic<std::uint32_t> mPassesRead{0};
};

}  // namespace platform
