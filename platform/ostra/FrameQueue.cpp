#include "ostra/FrameQueue.h"

#include <algorithm>
#include <limits>

namespace platform {

FrameQueue::FrameQueue(std::size_t valuesPerFrame, std::size_t extrasPerFrame)
    : mValuesPerFrame(valuesPerFrame),
      mFrames(MAX_FRAMES),
      mValues(MAX_FRAMES * valuesPerFrame),
      mExtrasPerFrame(extrasPerFrame),
      mExtras(MAX_FRAMES * extrasPerFrame),
      mPasses(MAX_PASSES) {}

bool FrameQueue::push(const Ostra::FrameDump& dump, const std::vector<double>& extraValues) {
    const std::uint32_t frame = mFramesWritten.load(std::memory_order_relaxed);
    const std::uint32_t firstPass = mPassesWritten.load(std::memory_order_relaxed);
    const std::uint32_t freePasses = MAX_PASSES - (firstPass - mPassesRead.load(std::memory_order_acquire));
    if (frame - mFramesRead.load(std::memory_order_acquire) >= MAX_FRAMES ||
        dump.renderPasses.size() > freePasses) {
        return false;
    }
    const std::uint32_t slot = frame % MAX_FRAMES;
    const std::size_t valueCount = std::min(dump.values.size(), mValuesPerFrame);
    const auto passCount = static_cast<std::uint32_t>(dump.renderPasses.size());
    mFrames[slot] = {dump.frameNumber,
                     dump.timestampMs,
                     dump.renderPassFrameId,
                     dump.frameDuration,
                     static_cast<std::uint32_t>(valueCount),
                     passCount,
                     firstPass};
    std::copy_n(dump.values.begin(), valueCount,
                mValues.begin() + static_cast<std::ptrdiff_t>(slot * mValuesPerFrame));
    for (std::size_t i = 0; i < mExtrasPerFrame; ++i) {
        mExtras[slot * mExtrasPerFrame + i] =
            i < extraValues.size() ? extraValues[i] : std::numeric_limits<double>::quiet_NaN();
    }
    for (std::uint32_t i = 0; i < passCount; ++i) {
        mPasses[(firstPass + i) % MAX_PASSES] = dump.renderPasses[i];
    }
    mPassesWritten.store(firstPass + passCount, std::memory_order_relaxed);
    mFramesWritten.store(frame + 1, std::memory_order_release);
    return true;
}

bool FrameQueue::isHalfFull() const {
    const std::uint32_t frames =
        mFramesWritten.load(std::memory_order_relaxed) - mFramesRead.load(std::memory_order_relaxed);
    const std::uint32_t passes =
        mPassesWritten.load(std::memory_order_relaxed) - mPassesRead.load(std::memory_order_relaxed);
    return frames >= MAX_FRAMES / 2 || passes >= MAX_PASSES / 2;
}

const FrameQueue::Frame* FrameQueue::front() const {
    const std::uint32_t frame = mFramesRead.load(std::memory_order_relaxed);
    return frame == mFramesWritten.load(std::memory_order_acquire) ? nullptr : &mFrames[frame % MAX_FRAMES];
}

const Ostra::DumpValue& FrameQueue::value(std::size_t index) const {
    const std::uint32_t slot = mFramesRead.load(std::memory_order_relaxed) % MAX_FRAMES;
    return mValues[slot * mValuesPerFrame + index];
}

double FrameQueue::extraValue(std::size_t index) const {
    const std::uint32_t slot = mFramesRead.load(std::memory_order_relaxed) % MAX_FRAMES;
    return mExtras[slot * mExtrasPerFrame + index];
}

const Ostra::DumpRenderpassValue& FrameQueue::pass(std::uint32_t index) const {
    const std::uint32_t slot = mFramesRead.load(std::memory_order_relaxed) % MAX_FRAMES;
    return mPasses[(mFrames[slot].firstPass + index) % MAX_PASSES];
}

void FrameQueue::pop() {
    const std::uint32_t frame = mFramesRead.load(std::memory_order_relaxed);
    const Frame& oldest = mFrames[frame % MAX_FRAMES];
    mPassesRead.store(oldest.firstPass + oldest.passCount, std::memory_order_release);
    mFramesRead.store(frame + 1, std::memory_order_release);
}

}  // namespace platform
