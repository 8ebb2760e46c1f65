#include "figures/Metrics.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace figures {

namespace {

using sources::Id;

/// How often the library's slow reader is asked.
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
    {&Metrics::cpuLoad, &Metrics::percentTop, Id::CPU_LOAD_PROCESS},
    {&Metrics::gpuClock, &Metrics::gpuClockTop, Id::GPU_CLOCK, true},
    {&Metrics::gpuLoad, &Metrics::percentTop, Id::GPU_LOAD_DEVICE, true},
    {&Metrics::cpuTemperature, nullptr, Id::CPU_TEMPERATURE},
    {&Metrics::gpuTemperature, nullptr, Id::GPU_TEMPERATURE, true},
    {&Metrics::gpuMaxClock, nullptr, Id::GPU_CLOCK_MAX, true},
    {&Metrics::pss, &Metrics::processMemoryTop, Id::MEMORY_PROCESS},
    {&Metrics::gpuMemoryTotal, &Metrics::processMemoryTop, Id::GPU_MEMORY_PROCESS, true},
    {&Metrics::gpuMemorySurface, &Metrics::processMemoryTop, Id::COUNT, true},
    {&Metrics::gpuMemoryTexture, &Metrics::processMemoryTop, Id::COUNT, true},
    {&Metrics::systemMemoryFree, &Metrics::systemMemoryTotal, Id::MEMORY_FREE},
    {&Metrics::systemMemoryUsed, nullptr, Id::MEMORY_USED},
    {nullptr, nullptr, Id::CPU_LOAD_SYSTEM},
    {nullptr, nullptr, Id::CPU_LOAD_CORE},
    {nullptr, nullptr, Id::CPU_CLOCK},
    {nullptr, nullptr, Id::GPU_LOAD_PROCESS},
    {nullptr, nullptr, Id::GPU_POWER},
    {nullptr, nullptr, Id::GPU_FAN},
    {nullptr, nullptr, Id::GPU_MEMORY_DEVICE},
    {nullptr, nullptr, Id::GPU_MEMORY_TOTAL},
    {nullptr, nullptr, Id::THERMAL_STATUS},
};

Metrics::Metrics(Sources sources)
    : mState(makeState()),
      mCpuDamper(CPU_DAMPER_SPAN),
      mSources(sources),
      mHasGpuFiles(access("/sys/kernel/gpu", F_OK) == 0) {}

void Metrics::want(const FigureSet& wanted) {
    if (mWanted.none() && wanted.any()) {
        mIsMachineRead = mSources == Sources::ALL && !isServedOtherFiles();
    }
    mWanted = wanted;
    for (std::size_t i = 0; i < mReadings.size(); ++i) {
        mReadings[i] = wanted[i] ? mReadings[i] : Reading();
    }
    if (!mIsMachineRead) {
        return;
    }
    sources::Wanted machine;
    for (const Figure& figure : catalogue()) {
        const Id id = READERS[static_cast<std::size_t>(figure.origin.source)].machine;
        if (wanted[indexOf(figure)] && id != Id::COUNT) {
            machine.set(static_cast<std::size_t>(id));
        }
    }
    const auto add = [&machine](Id id, Id other) {
        if (machine[static_cast<std::size_t>(id)]) {
            machine.set(static_cast<std::size_t>(other));
        }
    };
    add(Id::GPU_LOAD_DEVICE, Id::GPU_LOAD_PROCESS);  // which stands in
    add(Id::GPU_CLOCK, Id::GPU_CLOCK_MAX);           // tops of graphs
    add(Id::MEMORY_FREE, Id::MEMORY_USED);
    mMachine.want(machine);
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
    mSincePssUs += elapsedUs;
    mSystemMemory.reset();
    mIsGpuTimeWanted = false;
    for (const Figure& figure : catalogue()) {
        if (mWanted[indexOf(figure)]) {
            mReadings[indexOf(figure)] = read(READERS[static_cast<std::size_t>(figure.origin.source)]);
        }
    }
    mGpuNanoseconds = 0;
    mGpuFrameNanoseconds = 0;
    if (mIsMachineRead) {
        mMachine.onFrames(elapsedUs);
    }
}

Reading Metrics::read(const Reader& reader) {
    const bool hasMachine = reader.machine != Id::COUNT && mIsMachineRead;
    Reading reading = Reason::NO_FILE;
    if (reader.read != nullptr && (!mIsMachineRead || (reader.isOfGpuFiles ? mHasGpuFiles : !hasMachine))) {
        reading = (this->*reader.read)();
    }
    if (!reading && hasMachine) {
        reading = machineValue(reader.machine);
    }
    if (reader.read == &Metrics::gpuLoad) {
        mIsGpuTimeWanted = !reading;
        return reading ? reading : gpuTimeShare();
    }
    return reader.top == &Metrics::processMemoryTop ? keepPeak(reading) : reading;
}

Reading Metrics::machineValue(sources::Id id) const {
    Reading reading = mMachine.value(id);
    if (id == Id::GPU_LOAD_DEVICE && !reading) {
        const Reading ofProcess = mMachine.value(Id::GPU_LOAD_PROCESS);
        return ofProcess ? ofProcess : reading;
    }
    if (id == Id::GPU_FAN && mMachine.isFanInPercent()) {
        reading.setSuffix("%");
    }
    return reading;
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
    return fromReader(core::StateInfo::getGPUUsage());
}

Reading Metrics::gpuTimeShare() const {
    if (mGpuFrameNanoseconds == 0) {
        return {};
    }
    const double share = static_cast<double>(mGpuNanoseconds) / static_cast<double>(mGpuFrameNanoseconds);
    return std::min(100.0 * share, 100.0);
}

Reading Metrics::gpuClock() {
    return fromReader(core::StateInfo::getGPUClock());
}

Reading Metrics::gpuClockTop() {
    return read(READERS[static_cast<std::size_t>(Source::GPU_MAX_CLOCK)]);
}

Reading Metrics::gpuMaxClock() {
    return fromReader(core::StateInfo::getGPUMaxClock());
}

Reading Metrics::pss() {
    if (!mPss || mSincePssUs >= SLOW_PERIOD_US) {
        mPss = readProportionalSetSize();
        mSincePssUs = 0.0;
    }
    return mPss;
}

Reading Metrics::gpuMemoryTotal() {
    return readGpuMemoryTotal();
}

Reading Metrics::gpuMemorySurface() {
    return readGpuMemorySurface();
}

Reading Metrics::gpuMemoryTexture() {
    return readGpuMemoryTexture();
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
    if (mIsMachineRead) {
        const Reading used = mMachine.value(Id::MEMORY_USED);
        const Reading available = mMachine.value(Id::MEMORY_FREE);
        return used && available ? Reading(*used + *available) : Reading();
    }
    return systemMemory().total;
}

void Metrics::settle() {
    if (mIsMachineRead) {
        mMachine.settle();
    }
}

Reading Metrics::keepPeak(Reading bytes) {
    if (bytes) {
        mProcessMemoryPeak = std::max(mProcessMemoryPeak.value_or(0.0), *bytes);
    }
    return bytes;
}

}  // namespace figures
