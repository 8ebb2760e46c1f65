#include "figures/Metrics.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace figures {

namespace {

/// How often the slow figures are read.
constexpr double SLOW_PERIOD_US = 1000000.0;

/// The CPU load is the mean of one reading more than this.
constexpr unsigned int CPU_DAMPER_SPAN = 2;

/// The library's readers take integers as unsigned: a negative one comes out as 2^32 less its size, divided
/// by 1000 where the file counts in thousandths. No true figure reaches half of that.
constexpr float NEGATIVE_FIGURE = 2147483648.0F / 1000.0F;

Reading fromReader(float figure) {
    return figure >= 0.0F && figure < NEGATIVE_FIGURE ? Reading(figure) : Reading();
}

/// A state that looks for the GPU's clock unit and vendor only where there is something to find: without the
/// file the library logs an error.
core::StateInfo makeState() {
    std::FILE* const model = core::StateInfo::file_open("/sys/kernel/gpu/gpu_model", "r");
    if (model == nullptr) {
        return core::StateInfo(core::StateInfo::NO_GPU);
    }
    core::StateInfo::file_close(model);
    return {};
}

/// What the CPU-load reader must be told for a true interval so that it answers in percent of all
/// processors. It returns ticks * 100000 / elapsed. With H ticks a second and N processors, the load over t
/// microseconds is ticks / H / (t / 1000000 * N) * 100 percent, so elapsed = t * H * N / 1000.
double cpuLoadElapsed(double microseconds) {
    static const double ticksPerSecond = static_cast<double>(std::max(sysconf(_SC_CLK_TCK), 1L));
    static const double processors = readProcessorCount().value_or(1.0);
    return microseconds * ticksPerSecond * processors / 1000.0;
}

}  // namespace

// In the order of Source.
const Metrics::Reader Metrics::READERS[] = {
    {&Metrics::currentFps, &Metrics::maxFps},
    {&Metrics::medianFps, nullptr},
    {&Metrics::fpsStability, nullptr},
    {&Metrics::averageFps, nullptr},
    {&Metrics::low1Fps, nullptr},
    {&Metrics::low01Fps, nullptr},
    {&Metrics::cpuLoad, &Metrics::percentTop},
    {&Metrics::gpuClock, &Metrics::gpuMaxClock},
    {&Metrics::gpuLoad, &Metrics::percentTop},
    {&Metrics::cpuTemperature, nullptr},
    {&Metrics::gpuTemperature, nullptr},
    {&Metrics::gpuMaxClock, nullptr},
    {&Metrics::pss, &Metrics::processMemoryTop},
    {&Metrics::gpuMemoryTotal, &Metrics::processMemoryTop},
    {&Metrics::gpuMemorySurface, &Metrics::processMemoryTop},
    {&Metrics::gpuMemoryTexture, &Metrics::processMemoryTop},
    {&Metrics::systemMemoryFree, &Metrics::systemMemoryTotal},
    {&Metrics::systemMemoryUsed, nullptr},
};

Metrics::Metrics() : mState(makeState()), mCpuDamper(CPU_DAMPER_SPAN), mPss(readProportionalSetSize) {}

void Metrics::want(const FigureSet& wanted) {
    mWanted = wanted;
    bool isSlowWanted = false;
    for (const Figure& figure : catalogue()) {
        isSlowWanted = isSlowWanted || (wanted[indexOf(figure)] && figure.origin.source == Source::PSS);
    }
    if (isSlowWanted && !mIsSlowWanted) {
        mPss.start();
        mPss.request();
        mSinceSlowRequestUs = 0.0;
    } else if (!isSlowWanted) {
        mPss.stop();
    }
    mIsSlowWanted = isSlowWanted;
}

void Metrics::addFrame(std::uint64_t nanoseconds) {
    // The wish stays until the library's own statistics are reset, at the next refresh.
    const bool isResetWanted = core::StateInfo::mIsNeedToResetFps;
    if (isResetWanted && !mIsResetSeen) {
        mFrames.reset();
        mHighestFps = 0.0;
    }
    mIsResetSeen = isResetWanted;
    mFrames.add(nanoseconds);
}

void Metrics::addGpuTime(std::uint64_t gpuNanoseconds, std::uint64_t frameNanoseconds) {
    mGpuNanoseconds += gpuNanoseconds;
    mGpuFrameNanoseconds += frameNanoseconds;
}

void Metrics::refresh(std::uint32_t frames, double elapsedUs) {
    mState.getFPS(frames, elapsedUs);
    mFrames.refresh();
    mHighestFps = std::max(mHighestFps, mFrames.current().value_or(0.0));
    mSinceCpuLoadUs += elapsedUs;
    mSystemMemory.reset();
    mIsGpuTimeWanted = false;
    for (const Figure& figure : catalogue()) {
        Reading& reading = mReadings[indexOf(figure)];
        reading = mWanted[indexOf(figure)]
                      ? (this->*READERS[static_cast<std::size_t>(figure.origin.source)].read)()
                      : Reading();
    }
    mGpuNanoseconds = 0;
    mGpuFrameNanoseconds = 0;
    // Asked for after the last one was taken: which value a refresh shows must not depend on a race.
    mSinceSlowRequestUs += elapsedUs;
    if (mIsSlowWanted && mSinceSlowRequestUs >= SLOW_PERIOD_US) {
        mSinceSlowRequestUs = 0.0;
        mPss.start();  // if the process had no thread to spare before
        mPss.request();
    }
}

void Metrics::restart() {
    // The reader's previous ticks are from before the pause: with an endless interval in between, its
    // first answer would be a meaningless mean, so it is taken and dropped.
    mState.getCurrentCPUUsage(std::numeric_limits<double>::max());
    mSinceCpuLoadUs = 0.0;
}

Reading Metrics::top(const Figure& figure) {
    const Reader& reader = READERS[static_cast<std::size_t>(figure.origin.source)];
    return reader.top != nullptr ? (this->*reader.top)() : Reading();
}

Reading Metrics::currentFps() {
    return mFrames.current();
}

Reading Metrics::averageFps() {
    return mFrames.average();
}

Reading Metrics::medianFps() {
    return mFrames.median();
}

Reading Metrics::fpsStability() {
    return mFrames.stability();
}

Reading Metrics::low1Fps() {
    return mFrames.low(0.01);
}

Reading Metrics::low01Fps() {
    return mFrames.low(0.001);
}

Reading Metrics::maxFps() {
    return std::max(static_cast<double>(mState.getMaxFPS()), mHighestFps);
}

Reading Metrics::cpuLoad() {
    const Reading load = fromReader(mState.getCurrentCPUUsage(cpuLoadElapsed(mSinceCpuLoadUs)));
    mSinceCpuLoadUs = 0.0;
    if (!load) {
        return {};
    }
    // Ticks are counted in whole hundredths of a second: a short interval jumps, and can seem more than full.
    return mCpuDamper.setValueUnclamped(static_cast<float>(std::min(*load, 100.0)));
}

Reading Metrics::percentTop() {
    return 100.0;
}

Reading Metrics::cpuTemperature() {
    return fromReader(core::StateInfo::getCPUTemperature());
}

Reading Metrics::gpuTemperature() {
    return fromReader(core::StateInfo::getGPUTemperature());
}

Reading Metrics::gpuLoad() {
    const Reading load = fromReader(core::StateInfo::getGPUUsage());
    mIsGpuTimeWanted = !load;
    if (load || mGpuFrameNanoseconds == 0) {
        return load;
    }
    const double share = static_cast<double>(mGpuNanoseconds) / static_cast<double>(mGpuFrameNanoseconds);
    return 100.0 * std::min(share, 1.0);
}

Reading Metrics::gpuClock() {
    return fromReader(core::StateInfo::getGPUClock());
}

Reading Metrics::gpuMaxClock() {
    return fromReader(core::StateInfo::getGPUMaxClock());
}

Reading Metrics::pss() {
    return keepPeak(mPss.latest());
}

Reading Metrics::gpuMemoryTotal() {
    return keepPeak(readGpuMemoryTotal());
}

Reading Metrics::gpuMemorySurface() {
    return keepPeak(readGpuMemorySurface());
}

Reading Metrics::gpuMemoryTexture() {
    return keepPeak(readGpuMemoryTexture());
}

Reading Metrics::processMemoryTop() {
    return mProcessMemoryPeak ? Reading(*mProcessMemoryPeak * 1.25) : Reading();
}

const SystemMemory& Metrics::systemMemory() {
    if (!mSystemMemory) {
        mSystemMemory = readSystemMemory();
    }
    return *mSystemMemory;
}

Reading Metrics::systemMemoryFree() {
    return systemMemory().available;
}

Reading Metrics::systemMemoryUsed() {
    return systemMemory().used;
}

Reading Metrics::systemMemoryTotal() {
    return systemMemory().total;
}

void Metrics::settle() {
    mPss.settle();
}

Reading Metrics::keepPeak(Reading bytes) {
    if (bytes) {
        mProcessMemoryPeak = std::max(mProcessMemoryPeak.value_or(0.0), *bytes);
    }
    return bytes;
}

}  // namespace figures
