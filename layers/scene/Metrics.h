#pragma once

#include "core/StateInfo.h"
#include "scene/KernelFiles.h"
#include "scene/Reading.h"
#include "scene/SlowReader.h"
#include "utils/ValueDamper.h"

#include <cstdint>

namespace scene {

/// The figures of the overlay, one operation each. An operation reads its file when it is called, so that a
/// figure that is not shown costs nothing; call it at most once between two refreshes. Readers that answer
/// with a negative figure, with all bits set or with something that is no number give an empty reading.
class Metrics {
public:
    Metrics();

    /// A refresh of the figures begins: `frames` frames took `elapsedUs` microseconds since the last one.
    /// Takes the frame-rate sample, also when no frame rate is shown, so that the statistics are whole.
    void beginRefresh(std::uint32_t frames, double elapsedUs);

    /// The overlay was away: the next figures have nothing to do with the last ones.
    void restart();

    /// Frames per second, of the last interval; the mean and the median since the statistics were reset.
    Reading currentFps();
    Reading averageFps();
    Reading medianFps();

    /// Percentage of intervals within 20 % of the median.
    Reading fpsStability();

    /// The device's cap of the frame rate.
    Reading maxFps();

    /// Load of this process, 0 to 100: percent of all processors of the device, steadied over the last
    /// few calls.
    Reading cpuLoad();

    /// The top of a percentage's scale.
    Reading percentTop();

    /// Degrees Celsius.
    Reading cpuTemperature();
    Reading gpuTemperature();

    /// Percent.
    Reading gpuLoad();

    /// MHz.
    Reading gpuClock();
    Reading gpuMaxClock();

    /// Bytes of this process.
    Reading pss();
    Reading gpuMemoryTotal();
    Reading gpuMemorySurface();
    Reading gpuMemoryTexture();

    /// The common scale of these four's graphs, in bytes: a quarter more than the largest of them so far.
    Reading processMemoryTop();

    /// Bytes of the whole system: see SystemMemory for what counts as free.
    Reading systemMemoryFree();
    Reading systemMemoryTotal();
    Reading systemMemoryUsed();

    /// Starts or stops what is needed for the memory figures of slow files.
    void setSlowFiguresWanted(bool wanted);

    /// Waits until the slow figures of this refresh are there.
    void settle();

private:
    Reading keepPeak(Reading bytes);

    core::StateInfo mState;
    bool mHasFps = false;
    float mFps = 0.0F;
    double mSinceCpuLoadUs = 0.0;
    utils::ValueDamper mCpuDamper;
    double mSinceSlowRequestUs = 0.0;
    bool mIsSlowWanted = false;
    Reading mPssReading;
    Reading mProcessMemoryPeak;
    SystemMemory mSystemMemory;
    SlowReader mPss;  // the last member: its thread is the first to go
};

}  // namespace scene
