#pragma once

#include "core/RenderingApiType.h"
#include "core/SysPropWatcher.h"
#include "utils/Export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

namespace drawer {
class Drawer;
}

namespace core {

/// The overlay's state and what a layer asks of it. The static half belongs to the process: the control
/// properties, the frame hooks, the readers of kernel and driver files, the fixed clocks. The instance half
/// is one layer's frame-rate statistics and CPU-load bookkeeping.
///
/// A layer calls everything here on its rendering thread, and one thread uses one object; nothing is locked.
/// The members that other threads touch are atomic: the property values, mFixClockState, mIsDumpingEnabled.
class KORDANIX_EXPORT StateInfo {
public:
    /// Slots of the frame-rate window.
    static constexpr std::uint32_t FPS_WINDOW_SIZE = 100;
    /// Bins of the frame-rate histogram, a tenth of a frame per second each: 0 to 120.0.
    static constexpr std::uint32_t FPS_BIN_COUNT = 1201;

    /// Calls init().
    StateInfo();

    /// As after an init() that found no GPU, without having looked for one.
    enum NoGpu { NO_GPU };
    explicit StateInfo(NoGpu without);
    ~StateInfo() = default;

    /// Sets the frame-rate cap from the device model, clears all figures of the object, and looks for the
    /// GPU's clock unit and vendor (opening their files only until they have been found once in the process).
    void init();

    // --- Attaching and the overlay switch ---

    /// Registers a listener for the application going to the background, then fixes the clocks if the
    /// property asks for it and releases them otherwise. The listener ends a running dump and releases the
    /// clocks; it runs on a thread of the companion library, holding `mutex`. Listeners are never removed, so
    /// the mutex must live as long as the process.
    static void onAttached(std::mutex& mutex);

    /// Ends a running dump and releases the clocks.
    static void onDetached();

    /// Whether the overlay is shown in this process for this API: switched on, the API selected, and the
    /// process's name equal to the wanted one. The first call in the process reads all properties afresh;
    /// concurrent first calls are safe. With the overlay switched off no file is opened.
    static bool isOverlayEnabled(RenderingApiType api);

    // --- Frame hooks ---

    /// Before each buffer swap: takes over published settings, applies the clock decision after a change, and
    /// polls the keys while the overlay is enabled. Does not draw, lay out or sample.
    static void onPreSwapBuffers(RenderingApiType api);

    /// After each buffer swap: numbers the frame, records it while a dump runs, and starts or stops a dump
    /// when its key was pressed in developer mode. The drawers (none of them null) belong to the layer.
    static void onPostSwapBuffers(const std::vector<drawer::Drawer*>& drawers);

    /// Whether the settings changed in this frame, or invalidateWidgets() asked to treat it so.
    static bool isWidgetsUpdated();

    /// Makes isWidgetsUpdated() true until the next pre-swap hook.
    static void invalidateWidgets();

    /// Whether the capture key was pressed in the last poll, in developer mode.
    static bool isNeedToCaptureData();

    static bool isDumpingEnabled();

    // --- Frame-rate statistics; rates in frames per second ---

    /// Records an interval of `frames` frames that took `elapsedUs` microseconds and returns its rate, capped
    /// at mMaxFps. Returns 0 and records nothing when the interval is not positive. First clears the
    /// statistics if a dump start has asked for it.
    float getFPS(unsigned int frames, double elapsedUs);

    /// Mean since the last reset, capped; 0 before the first sample.
    float getAverageFPS() const;

    /// Mean of the window, capped; 0 before the first sample. The window is the last 100 samples; after a
    /// reset its empty slots count as 0 once the process has taken 100 samples.
    float getWindowAverageFPS() const;

    /// Median since the last reset, at most 120 and not capped by the device; 0 before the first sample.
    float getMedianFPS() const;

    float getMaxFPS() const;

    /// Percentage (0 to 100) of the samples within 20 % of the median; 0 before the first sample.
    float getFpsStability() const;

    /// Clears the statistics, but not the cap and not the CPU-load bookkeeping.
    void resetFps();

    // --- Readers of kernel and driver files ---
    // Each opens its file, reads and closes it on every call. A file that cannot be opened, or that holds no
    // number where one is expected, reads as -1.0 (memory: all bits set). Integers are taken as unsigned
    // 32-bit: of a larger number the low 32 bits count.

    /// CPU load of the process since the previous call: clock ticks times 100000 / `elapsed`, where `elapsed`
    /// is the caller's measure of the time since then. 0 when `elapsed` is not positive. -1.0 on the first
    /// call, and when the file cannot be read, which keeps the previous reading (a command name with a blank
    /// in it makes the file unreadable).
    float getCurrentCPUUsage(double elapsed);

    /// Degrees Celsius of the first thermal zone.
    static float getCPUTemperature();

    /// GPU load as the driver reports it.
    static float getGPUUsage();

    /// Current and highest GPU clock in MHz; -1.0 until the frequency table has been read.
    static float getGPUClock();
    static float getGPUMaxClock();

    /// Reads the GPU's frequency table unless that has been done, and returns whether it has been read now. A
    /// table without a number gives a highest clock of 0; numbers after something else are not read.
    static bool checkGPUClockUnit();

    /// Degrees Celsius. A figure that is not finite counts as no number.
    static float getGPUTemperature();

    /// KiB in use: total minus free minus cached memory, modulo 2^32.
    static std::uint32_t getMemoryUsage();

    // --- Fixed clocks ---

    /// The clocks a fix request asks for on this device, in the units the companion library expects; 0 if the
    /// device or the GPU's vendor is not in the table.
    static std::uint64_t getCPUFixClock();
    static std::uint64_t getGPUFixClock();

    /// Asks the companion library for fixed clocks (even if both are 0) and records the outcome.
    static void fixClock();

    static void unfixClock();

    enum : int { CLOCKS_RELEASED = 0, CLOCKS_FIXED = 1, CLOCKS_REFUSED = 2 };

    static int getFixClockState();

    // --- Thin wrappers of the C library's file operations, for the layers ---

    static std::FILE* file_open(const char* path, const char* mode);
    static std::size_t file_read(std::FILE* file, unsigned char* buffer, unsigned int size);
    static int file_close(std::FILE* file);

    // --- State of the process ---

    static int mVendor;                          ///< a utils::Vendor; set by init()
    static bool mIsWidgetsUpdated;               ///< the settings changed in this frame; true at load
    static bool mIsGpuClockKHz;                  ///< the GPU's clock files count in kHz rather than MHz
    static float mMaxGpuClock;                   ///< highest clock of the frequency table, in MHz
    static std::atomic<int> mFixClockState;      ///< as getFixClockState() returns it; relaxed order
    static bool mIsNeedToResetFps;               ///< the next getFPS() first clears the statistics
    static std::uint64_t mFrameNumber;           ///< frames seen by the post-swap hook
    static std::atomic<bool> mIsDumpingEnabled;  ///< a frame dump is running; relaxed order

    /// Control properties, created and read when the library is loaded.
    static SysProp<bool>& mStatusProp;                   ///< master switch of the overlay
    static SysProp<bool>& mDevModeProp;                  ///< enables the keys
    static SysProp<bool>& mFixClockProp;                 ///< fix the clocks while the overlay runs
    static SysProp<RenderingApiType>& mRenderApiProp;    ///< the API whose layer may show the overlay
    static SysProp<std::string>& mDebugProcessNameProp;  ///< the process in which it is shown

    // --- State of the object ---

    float mMaxFps = 0.0F;                 ///< cap of the frame-rate figures: 60 or 120
    std::uint32_t mFpsCount = 0;          ///< samples since the last reset
    float mFpsSum = 0.0F;                 ///< their sum
    std::uint32_t mWindowFpsCount = 0;    ///< window slots taken into the mean, at most FPS_WINDOW_SIZE
    float mWindowFpsSum = 0.0F;           ///< sum of the window
    float mMedianFpsX10 = 0.0F;           ///< median since the last reset, in tenths of a frame per second
    std::uint32_t mPrevCpuUserTicks = 0;  ///< CPU times of the previous CPU-load reading
    std::uint32_t mPrevCpuSystemTicks = 0;
    float mWindowFps[FPS_WINDOW_SIZE] = {};  ///< ring of the most recent samples
    std::uint32_t mFpsHistogram[FPS_BIN_COUNT] =
        {};  ///< samples per bin; rates beyond the last bin are in it
};

}  // namespace core
