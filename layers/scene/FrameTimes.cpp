#include "scene/FrameTimes.h"

#include <time.h>

namespace scene {

namespace {

/// Nobody can set or adjust this clock.
std::uint64_t now() {
    constexpr std::uint64_t NS_PER_SECOND = 1000000000;
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC_RAW, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * NS_PER_SECOND + static_cast<std::uint64_t>(time.tv_nsec);
}

}  // namespace

void FrameTimes::onHook() {
    mHookedAt = now();
}

void FrameTimes::onSwap() {
    mSwapAt = now();
}

void FrameTimes::onSwapped() {
    mSwappedAt = now();
}

void FrameTimes::onLeft() {
    mAfterSwap = now() - mSwappedAt;
}

bool FrameTimes::finish() {
    const bool isKnown = mHasSwapped;
    if (isKnown) {
        FrameTime& frame = mFrames[mCount % HISTORY];
        frame.total = mSwappedAt - mLastSwappedAt;
        frame.swap = mSwappedAt - mSwapAt;
        frame.overlay = mHookedAt == 0 ? FrameTime::NOT_MEASURED
                                       : static_cast<std::int64_t>(mAfterSwap + (mSwapAt - mHookedAt));
        frame.gpu = FrameTime::NOT_MEASURED;
        ++mCount;
    }
    mLastSwappedAt = mSwappedAt;
    mHasSwapped = true;
    return isKnown;
}

const FrameTime* FrameTimes::setGpu(std::uint32_t name, std::uint64_t nanoseconds) {
    const std::uint32_t framesAgo = static_cast<std::uint32_t>(mCount) - 1 - name;
    if (framesAgo >= size()) {
        return nullptr;
    }
    FrameTime& frame = mFrames[(mCount - 1 - framesAgo) % HISTORY];
    frame.gpu = static_cast<std::int64_t>(nanoseconds);
    return &frame;
}

}  // namespace scene
