#pragma once

#include <ostra/Ostra.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace platform {

/// Carries frames from the thread that dumps them to the one that writes them. Allocates all its memory when
/// it is made; neither side ever waits. One thread at a time pushes, one thread reads.
class FrameQueue {
public:
    /// How many frames and passes can wait: 17 seconds at 60 frames per second. Powers of two, so that the
    /// running counts may wrap.
    static constexpr std::uint32_t MAX_FRAMES = 1024;
    static constexpr std::uint32_t MAX_PASSES = 16384;

    /// A frame without its values and passes; value(), extraValue() and pass() give those.
    struct Frame {
        std::uint64_t frameNumber;
        std::int64_t timestampMs;
        std::int64_t renderPassFrameId;
        float frameDuration;
        std::uint32_t valueCount;  ///< how many values the frame itself had
        std::uint32_t passCount;
        std::uint32_t firstPass;
    };

    explicit FrameQueue(std::size_t valuesPerFrame, std::size_t extrasPerFrame = 0);

    /// Copies the frame, with at most as many values as the queue was made for. When there is no room it
    /// drops the frame and returns false.
    bool push(const Ostra::FrameDump& dump, const std::vector<double>& extraValues = {});

    /// Whether the reader should empty it now. Any thread.
    bool isHalfFull() const;

    /// The oldest frame, valid until pop(); null when the queue is empty.
    const Frame* front() const;

    /// A value and a render pass of the oldest frame.
    const Ostra::DumpValue& value(std::size_t index) const;
    double extraValue(std::size_t index) const;
    const Ostra::DumpRenderpassValue& pass(std::uint32_t index) const;

    /// Removes the oldest frame.
    void pop();

private:
    std::size_t mValuesPerFrame;
    std::vector<Frame> mFrames;
    std::vector<Ostra::DumpValue> mValues;
    std::size_t mExtrasPerFrame;
    std::vector<double> mExtras;  ///< NaN where a frame has none
    std::vector<Ostra::DumpRenderpassValue> mPasses;

    // Running counts. One side advances a count with release order once it is done with the slots; the other
    // reads it with acquire order before it touches them.
    std::atomic<std::uint32_t> mFramesWritten{0};
    std::atomic<std::uint32_t> mFramesRead{0};
    std::atomic<std::uint32_t> mPassesWritten{0};
    std::atomic<std::uint32_t> mPassesRead{0};
};

}  // namespace platform
