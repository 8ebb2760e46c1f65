#include "core/StateInfo.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <iterator>
#include <limits>

namespace core {

namespace {

constexpr float LAST_BIN = static_cast<float>(StateInfo::FPS_BIN_COUNT - 1);

// The slot that the next sample of any object goes to, and whether all slots have been used once. Layers of
// two APIs may feed their own objects on their own threads. Nothing depends on two of these values together,
// so relaxed order is enough.
std::atomic<std::uint32_t> sFpsWindowIndex{0};
std::atomic<bool> sIsFpsWindowFull{false};

float capped(float fps, float maximum) {
    return fps > maximum ? maximum : fps;
}

/// The bin of a figure in tenths of a frame per second. Any figure has one, NaN too.
std::uint32_t binOf(float fpsX10) {
    return fpsX10 > 0.0F ? static_cast<std::uint32_t>(std::min(fpsX10, LAST_BIN)) : 0;
}

/// Median of the `count` samples in the histogram, in tenths of a frame per second.
float medianOf(const std::uint32_t* histogram, std::uint32_t count, float previous) {
    const auto half = static_cast<std::uint32_t>(static_cast<float>(count) * 0.5F);
    std::uint32_t below = 0;
    std::uint32_t lastNonEmpty = 0;
    for (std::uint32_t bin = 0; bin < StateInfo::FPS_BIN_COUNT; ++bin) {
        if (below + histogram[bin] > half) {
            // When the count is even, the lower of the two middle samples may be in an earlier bin.
            const bool isMiddleInBin = count % 2 == 1 || below != half;
            return isMiddleInBin ? static_cast<float>(bin) : static_cast<float>(lastNonEmpty + bin) * 0.5F;
        }
        below += histogram[bin];
        if (histogram[bin] != 0) {
            lastNonEmpty = bin;
        }
    }
    return previous;
}

}  // namespace

float StateInfo::getFPS(unsigned int frames, double elapsedUs) {
    if (mIsNeedToResetFps) {
        mIsNeedToResetFps = false;
        resetFps();
    }
    if (!(elapsedUs > 0.0)) {
        return 0.0F;
    }
    const double rate = frames * 1000000.0 / elapsedUs;
    const auto fps = static_cast<float>(std::min<double>(rate, std::numeric_limits<float>::max()));

    ++mFpsCount;
    mFpsSum += fps;

    const std::uint32_t slot = sFpsWindowIndex.load(std::memory_order_relaxed);
    if (sIsFpsWindowFull.load(std::memory_order_relaxed)) {
        mWindowFpsSum = (mWindowFpsSum - mWindowFps[slot]) + fps;
        mWindowFps[slot] = fps;
        mWindowFpsCount = FPS_WINDOW_SIZE;
    } else {
        mWindowFps[slot] = fps;
        ++mWindowFpsCount;
        mWindowFpsSum += fps;
    }

    ++mFpsHistogram[binOf(std::round(fps * 10.0F))];
    mMedianFpsX10 = medianOf(mFpsHistogram, mFpsCount, mMedianFpsX10);

    if (slot + 1 < FPS_WINDOW_SIZE) {
        sFpsWindowIndex.store(slot + 1, std::memory_order_relaxed);
    } else {
        sFpsWindowIndex.store(0, std::memory_order_relaxed);
        sIsFpsWindowFull.store(true, std::memory_order_relaxed);
    }
    return capped(fps, mMaxFps);
}

float StateInfo::getAverageFPS() const {
    return mFpsCount == 0 ? 0.0F : capped(mFpsSum / static_cast<float>(mFpsCount), mMaxFps);
}

float StateInfo::getWindowAverageFPS() const {
    return mWindowFpsCount == 0 ? 0.0F : capped(mWindowFpsSum / static_cast<float>(mWindowFpsCount), mMaxFps);
}

float StateInfo::getMedianFPS() const {
    return mMedianFpsX10 * 0.1F;
}

float StateInfo::getMaxFPS() const {
    return mMaxFps;
}

float StateInfo::getFpsStability() const {
    if (mFpsCount == 0) {
        return 0.0F;
    }
    const float tolerance = mMedianFpsX10 * 0.2F;
    const std::uint32_t low = binOf(mMedianFpsX10 - tolerance);
    const std::uint32_t high = binOf(std::ceil(mMedianFpsX10 + tolerance));
    std::uint32_t inside = 0;
    for (std::uint32_t bin = low; bin <= high; ++bin) {
        inside += mFpsHistogram[bin];
    }
    return static_cast<float>(inside) / static_cast<float>(mFpsCount) * 100.0F;
}

void StateInfo::resetFps() {
    mFpsCount = 0;
    mFpsSum = 0.0F;
    mWindowFpsCount = 0;
    mWindowFpsSum = 0.0F;
    mMedianFpsX10 = 0.0F;
    std::fill(std::begin(mWindowFps), std::end(mWindowFps), 0.0F);
    std::fill(std::begin(mFpsHistogram), std::end(mFpsHistogram), 0U);
}

}  // namespace core
