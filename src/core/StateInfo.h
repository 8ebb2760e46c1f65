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

/// The overlay's state and its operations for a layer. The static half belongs to the process: the control
/// properties, the frame hooks, the readers of kernel and driver files, the fixed clocks. The instance half
/// is one layer's frame-rate statistics and CPU-load bookkeeping.
///
/// A layer calls everything on its rendering thread, and only one thread uses an object; there are no locks.
/// The members that other threads use are atomic: the property values, mFixClockState, mIsDumpingEnabled.
class KORDANIX_EXPORT StateInfo {
public:
    /// The number of slots in the frame-rate window.
    static constexpr std::uint32_t FPS_WINDOW_SIZE = 100;
    /// The number of bins in the frame-rate histogram, each a tenth of a frame per second: 0 to 120.0.
    static constexpr std::uint32_t FPS_BIN_COUNT = 1201;

    /// Calls init().
    StateInfo();

    /// Makes an object as after an init() that found no GPU, without looking for one.
    enum NoGpu { NO_GPU };
    explicit StateInfo(NoGpu without);
    ~StateInfo() = default;

    /// Sets the frame-rate cap from the device model, clears the object's figures, and looks for the GPU's
    /// clock unit and vendor (it opens their files only until the process has found them once).
    void init();

    // --- Attaching and the overlay switch ---

    /// Registers a listener for the application going to the background. Then fixes the clocks if the
    /// property asks for it, and releases them otherwise. The listener ends a running dump and releases the
    /// clocks; it runs on a thread of the companion library and holds `mutex`. Listeners are never removed,
    /// so the mutex must live as long as the process.
    static void onAttached(std::mutex& mutex);

    /// Ends a running dump and releases the clocks.
    static void onDetached();

    /// Whether this process shows the overlay for this API: the overlay is switched on, the API is the
    /// selected one, and the process has the wanted name. The first call in the process reads all properties
    /// again; concurrent first calls are safe. Opens no file while the overlay is switched off.
    static bool isOverlayEnabled(RenderingApiType api);

    // --- Frame hooks ---

    /// The layer calls this before each buffer swap. Applies published settings, fixes or releases the clocks
    /// after a change, and polls the keys while the overlay is enabled. Does not draw, lay out or sample.
    static void onPreSwapBuffers(RenderingApiType api);

    /// The layer calls this after each buffer swap. Numbers the frame, records it while a dump runs, and
    /// starts or stops a dump when its key was pressed in developer mode. The layer owns the drawers (none of
    /// them null).
    static void onPostSwapBuffers(const std::vector<drawer::Drawer*>& drawers);

    /// Whether the settings changed in this frame, or somebody called invalidateWidgets().
    static bool isWidgetsUpdated();

    /// Makes isWidgetsUpdated() true until the next pre-swap hook.
    static void invalidateWidgets();

    /// Whether the capture key was pressed in the last poll, in developer mode.
    static bool isNeedToCaptureData();

    static bool isDumpingEnabled();

    // --- Frame-rate statistics; rates in frames per second ---

    /// Records an interval of `frames` frames that took `elapsedUs` microseconds and returns its rate, capped
    /// at mMaxFps. Returns 0 and records nothing when the interval is not positive. Clears the statistics
    /// first if a dump has started since the last call.
    float getFPS(unsigned int frames, double elapsedUs);

    /// Mean since the last reset, capped; 0 before the first sample.
    float getAverageFPS() const;

    /// Mean of the window, capped; 0 before the first sample. The window is the last 100 samples; after a
    /// reset its empty slots count as 0 once the process has taken 100 samples.
    float getWindowAverageFPS() const;

    /// Median since the last reset, at most 120, regardless of the device's cap; 0 before the first sample.
    float getMedianFPS() const;

    float getMaxFPS() const;

    /// Percentage (0 to 100) of the samples within 20 % of the median; 0 before the first sample.
    float getFpsStability() const;

    /// Clears the statistics, but not the cap and not the CPU-load bookkeeping.
    void resetFps();

    // --- Readers of kernel and driver files ---
    // Each call opens its file, reads it and closes it. A reader returns -1.0 (memory: all bits set) when it
    // cannot open the file or finds no number where it expects one. Integers are unsigned 32-bit: only the
    // low 32 bits of a larger number count.

    /// CPU load of the process since the previous call: clock ticks times 100000 / `elapsed`, where `elapsed`
    /// is the time since then as the caller measures it. 0 when `elapsed` is not positive. -1.0 on the first
    /// call, and when it cannot read the file (a command name with a blank prevents that), which keeps the
    /// previous reading.
    float getCurrentCPUUsage(double elapsed);

    /// Degrees Celsius of the first thermal zone.
    static float getCPUTemperature();

    /// GPU load as the driver reports it.
    static float getGPUUsage();

    /// Current and highest GPU clock in MHz; -1.0 until the frequency table has been read.
    static float getGPUClock();
    static float getGPUMaxClock();

    /// Reads the GPU's frequency table once, and returns whether this call has read it. A table without a
    /// number gives a highest clock of 0; reading stops at the first thing that is not a number.
    static bool checkGPUClockUnit();

    /// Degrees Celsius. A figure that is not finite counts as missing.
    static float getGPUTemperature();

    /// KiB in use: total minus free minus cached memory, modulo 2^32.
    static std::uint32_t getMemoryUsage();

    // --- Fixed clocks ---

    /// The clocks that a fix request asks for on this device, in the companion library's units; 0 if the
    /// table does not have the device or the GPU's vendor.
    static std::uint64_t getCPUFixClock();
    static std::uint64_t getGPUFixClock();

    /// Asks the companion library for fixed clocks (even if both are 0) and records the outcome.
    static void fixClock();

    static void unfixClock();

    enum : int { CLOCKS_RELEASED = 0, CLOCKS_FIXED = 1, CLOCKS_REFUSED = 2 };

    static int getFixClockState();

    // --- Thin wrappers of the C library's file operations, for layers ---

    static std::FILE* file_open(const char* path, const char* mode);
    static std::size_t file_read(std::FILE* file, unsigned char* buffer, unsigned int size);
    static int file_close(std::FILE* file);

    // --- State of the process ---

    static int mVendor;                          ///< a utils::Vendor; set by init()
    static bool mIsWidgetsUpdated;               ///< the settings changed in this frame; true at load
    static bool mIsGpuClockKHz;                  ///< the GPU's clock files count in kHz rather than MHz
    static float mMaxGpuClock;                   ///< highest clock of the frequency table, in MHz
    static std::atomic<int> mFixClockState;      ///< as getFixClockState() returns it; relaxed order
    static bool mIsNeedToResetFps;               ///< the next getFPS() clears the statistics first
    static std::uint64_t mFrameNumber;           ///< counted by the post-swap hook
    static std::atomic<bool> mIsDumpingEnabled;  ///< a frame dump is running; relaxed order

    /// The control properties, created and read when the library is loaded.
    static SysProp<bool>& mStatusProp;                   ///< master switch of the overlay
    static SysProp<bool>& mDevModeProp;                  ///< enables the keys
    static SysProp<bool>& mFixClockProp;                 ///< fix the clocks while the overlay runs
    static SysProp<RenderingApiType>& mRenderApiProp;    ///< the API whose layer may show the overlay
    static SysProp<std::string>& mDebugProcessNameProp;  ///< the process that shows the overlay

    // --- State of the object ---

    float mMaxFps = 0.0F;                 ///< cap of the frame-rate figures: 60 or 120
    std::uint32_t mFpsCount = 0;          ///< samples since the last reset
    float mFpsSum = 0.0F;                 ///< their sum
    std::uint32_t mWindowFpsCount = 0;    ///< window slots in the mean, at most FPS_WINDOW_SIZE
    float mWindowFpsSum = 0.0F;           ///< sum of the window
    float mMedianFpsX10 = 0.0F;           ///< median since the last reset, in tenths of a frame per second
    std::uint32_t mPrevCpuUserTicks = 0;  ///< CPU times of the previous CPU-load reading
    std::uint32_t mPrevCpuSystemTicks = 0;
    float mWindowFps[FPS_WINDOW_SIZE] = {};  ///< ring of the most recent samples
    std::uint32_t mFpsHistogram[FPS_BIN_COUNT] =
        {};  ///< samples per bin; rates beyond the last bin are in it
};

}  // namespace core
