#pragma once

#include "core/HWcounterAdreno.h"
#include "core/RenderingApiType.h"
#include "utils/Export.h"

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace core {

/// One sample of a shader stage.
struct ShaderActivity {
    double time;     ///< seconds
    float activity;  ///< fraction, 0 to 1
};

/// Samples GPU counters on a thread of its own during one capture, at most once in 500 µs. Between samples
/// the thread polls the clock without sleeping, which keeps one CPU core busy.
///
/// The layer's rendering thread calls all operations but threadFunction(). The published figures change only
/// there: in finishCapturing() and when the source is initialised.
class KORDANIX_EXPORT HWcounterThread : public HWcounter {
public:
    explicit HWcounterThread(RenderingApiType api);

    /// Calls destroy().
    ~HWcounterThread();

    HWcounterThread(const HWcounterThread&) = delete;
    HWcounterThread& operator=(const HWcounterThread&) = delete;

    /// Initialises the source unless it is ready or known to be unavailable, and clears all figures. Do not
    /// call it during a capture; the capture's thread initialises the source if needed.
    void init();

    /// Starts a capture of this many milliseconds. Does nothing while one is running or when the source is
    /// unavailable. Throws std::system_error, leaving no capture running, if no thread can be created.
    void startCapturing(unsigned long durationMs);

    /// Tells the thread to end; does not wait for it.
    void stopCapturing();

    /// Ends the capture, waits for its thread and publishes its figures.
    void finishCapturing();

    /// Ends the capture and waits for its thread without publishing.
    void joinThread();

    /// Ends the capture, waits for its thread and releases the source; the next use initialises it again.
    void destroy();

    /// During a capture, gives the newest sample's usage; otherwise asks the source. While the source is not
    /// ready, it returns false and writes nothing.
    bool getGpuUsage(double& usage);

    /// Copies the published series.
    void getGpuActivity(std::vector<ShaderActivity>& vertexActivity,
                        std::vector<ShaderActivity>& fragmentActivity);

    /// The published offsets.
    void getCpuGpuTimeDiff(unsigned long long* diff);
    void getRealtimeMonotonictimeDiff(unsigned long long* diff);

    /// The body of the sampling thread. Ends the capture early when memory runs out.
    void threadFunction();

    /// The last result of the source's init(). The sampling thread sets it with release order, so that
    /// whoever reads 1 finds the source ready.
    std::atomic<int> mInitState;

    std::thread mThread;  ///< the thread of the current or last capture

    std::atomic<bool> mIsStopRequested;  ///< relaxed order: only ends the loop

    /// The thread clears it with release order after its last access to the object. Whoever reads false with
    /// acquire order owns the capture's figures, even before joining the thread.
    std::atomic<bool> mIsCapturing;

    std::uint32_t mCaptureDurationUs;

    // The published figures of the last finished capture.
    double mGpuUsage;
    unsigned long long mCpuGpuTimeDiff;
    unsigned long long mRealtimeMonotonicTimeDiff;
    std::vector<ShaderActivity> mVertexActivity;
    std::vector<ShaderActivity> mFragmentActivity;

    // The figures of the running capture, which the sampling thread writes. The layer may read the usage
    // (relaxed order) meanwhile.
    std::atomic<double> mCaptureGpuUsage;
    unsigned long long mCaptureCpuGpuTimeDiff;
    unsigned long long mCaptureRealtimeMonotonicTimeDiff;
    std::vector<ShaderActivity> mCaptureVertexActivity;
    std::vector<ShaderActivity> mCaptureFragmentActivity;

    RenderingApiType mApiType;

private:
    void clearPublished();
    void clearCapture();

    // The sampling thread calls these.

    /// Runs the capture, from the source's initialisation to its last sample.
    void sample();

    /// Asks the source for a sample and stores it.
    void takeSample();
};

}  // namespace core
