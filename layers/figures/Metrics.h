#pragma once

#include "core/StateInfo.h"
#include "figures/Catalogue.h"
#include "figures/FrameStatistics.h"
#include "figures/KernelFiles.h"
#include "figures/MachineReader.h"
#include "figures/Reading.h"
#include "utils/ValueDamper.h"

#include <array>
#include <cstdint>
#include <optional>

namespace figures {

/// The values of the figures of the catalogue. A refresh takes all that are wanted; until the next one the
/// answers stay as they are. What is not wanted costs nothing. Rendering thread only.
///
/// Asks the library's own readers first for what lies below /sys/kernel/gpu, and for everything when a device
/// is simulated. A helper thread reads the rest from the machine's files.
class Metrics {
public:
    /// Who may be asked.
    enum class Sources { ALL, LIBRARY };

    explicit Metrics(Sources sources = Sources::ALL);

    /// From the next refresh on. Starts or ends the thread that reads the machine's figures.
    void want(const FigureSet& wanted);

    /// A frame took this long. The start of a dump resets the statistics.
    void addFrame(std::uint64_t nanoseconds);

    /// The GPU worked for this long on a frame, which took so long. Stands in for the GPU's load where there
    /// is none.
    void addGpuTime(std::uint64_t gpuNanoseconds, std::uint64_t frameNanoseconds);

    /// Whether addGpuTime() makes a difference.
    bool isGpuTimeWanted() const { return mIsGpuTimeWanted; }

    /// `frames` frames took `elapsedUs` microseconds since the last refresh, which is what the library's own
    /// statistics are fed with.
    void refresh(std::uint32_t frames, double elapsedUs);

    /// The overlay was away: the next values have nothing to do with the last ones.
    void restart();

    /// The value at the last refresh.
    const Reading& reading(const Figure& figure) const { return mReadings[indexOf(figure)]; }

    /// The value at the top of the figure's graph; empty: the largest value so far.
    Reading top(const Figure& figure);

    /// The GPU that the process works with where the machine has several; else empty.
    const char* gpuName() const { return mMachine.gpuName(); }

    /// Waits until the machine's figures have been read, for the next refresh.
    void settle();

private:
    struct Reader {
        Reading (Metrics::*read)();                ///< the library's; null: it has none
        Reading (Metrics::*top)();                 ///< of the graph's scale; null: the largest value so far
        sources::Id machine = sources::Id::COUNT;  ///< COUNT: the machine has none
        bool isOfGpuFiles = false;                 ///< whether `read` looks below /sys/kernel/gpu
    };
    static const Reader READERS[static_cast<std::size_t>(Source::COUNT)];

    Reading read(const Reader& reader);
    Reading machineValue(sources::Id id) const;
    Reading gpuTimeShare() const;

    // The library's sources, called once a refresh. A number that is negative, infinite, NaN or has all bits
    // set gives an empty reading.

    /// See FrameStatistics.
    Reading currentFps();
    Reading averageFps();
    Reading medianFps();
    Reading fpsStability();
    Reading low1Fps();
    Reading low01Fps();

    /// Load of this process, 0 to 100: percent of all processors of the device, the mean of a few refreshes.
    Reading cpuLoad();

    /// Degrees Celsius.
    Reading cpuTemperature();
    Reading gpuTemperature();

    /// Percent, of time or else of the frames.
    Reading gpuLoad();

    /// MHz.
    Reading gpuClock();
    Reading gpuMaxClock();

    /// Bytes of this process.
    Reading pss();
    Reading gpuMemoryTotal();
    Reading gpuMemorySurface();
    Reading gpuMemoryTexture();

    /// Bytes of the whole system: see SystemMemory.
    Reading systemMemoryFree();
    Reading systemMemoryUsed();

    // The tops of graphs.

    /// The device's cap of the frame rate, or the highest rate so far if that is higher.
    Reading maxFps();
    Reading percentTop();
    Reading gpuClockTop();
    /// For all memory of the process: a quarter more than the largest value of one of its figures.
    Reading processMemoryTop();
    Reading systemMemoryTotal();

    Reading keepPeak(Reading bytes);
    const SystemMemory& systemMemory();

    FigureSet mWanted;
    std::array<Reading, FigureSet().size()> mReadings;

    core::StateInfo mState;
    FrameStatistics mFrames;
    bool mIsResetSeen = false;  // of those that a dump's start asks for
    double mHighestFps = 0.0;
    std::uint64_t mGpuNanoseconds = 0;  // since the last refresh
    std::uint64_t mGpuFrameNanoseconds = 0;
    bool mIsGpuTimeWanted = false;
    double mSinceCpuLoadUs = 0.0;
    utils::ValueDamper mCpuDamper;
    double mSincePssUs = 0.0;
    Reading mPss;
    Reading mProcessMemoryPeak;
    std::optional<SystemMemory> mSystemMemory;  // of this refresh, once somebody has asked
    Sources mSources;
    bool mIsMachineRead = false;  // known once figures are wanted
    bool mHasGpuFiles;
    MachineReader mMachine;
};

}  // namespace figures
