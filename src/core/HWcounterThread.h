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

/// Samples GPU counters on a thread of its own for the length of one capture, at most once in 500 µs. Between
/// samples the thread polls the clock without sleeping and so keeps one CPU core busy.
///
/// All operations but threadFunction() belong to the layer's rendering thread. The published figures change
/// only there, in finishCapturing() and when the source is initialised.
class KORDANIX_EXPORT HWcounterThread : public HWcounter {
public:
    explicit HWcounterThread(RenderingApiType api);

    /// As destroy().
    ~HWcounterThread();

    HWcounterThread(const HWcounterThread&) = delete;
    HWcounterThread& operator=(const HWcounterThread&) = delete;

    /// Initialises the source unless it is ready or known to be unavailable, and clears all figures. Not
    /// while a capture is running: its thread does it by itself when needed.
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

    /// Ends the capture, waits for its thread and gives the source back; the next use initialises it again.
    void destroy();

    /// The usage while capturing: the newest sample's. Otherwise the source is asked. False while the source
    /// is not ready, and then nothing is written.
    bool getGpuUsage(double& usage);

    /// Copies the published series.
    void getGpuActivity(std::vector<ShaderActivity>& vertexActivity,
                        std::vector<ShaderActivity>& fragmentActivity);

    /// The published offsets.
    void getCpuGpuTimeDiff(unsigned long long* diff);
    void getRealtimeMonotonictimeDiff(unsigned long long* diff);

    /// Body of the sampling thread. A capture for which memory runs out ends early.
    void threadFunction();

    /// What init() of the source returned. Set with release order on the sampling thread, so that whoever
    /// reads 1 finds the source ready.
    std::atomic<int> mInitState;

    std::thread mThread;  ///< of the current or last capture

    std::atomic<bool> mIsStopRequested;  ///< relaxed order: only ends the loop

    /// Cleared by the thread with release order, as the last thing it does to the object: whoever reads false
    /// with acquire order owns the capture's figures even if the thread has not been joined.
    std::atomic<bool> mIsCapturing;

    std::uint32_t mCaptureDurationUs;

    // Published: of the last finished capture.
    double mGpuUsage;
    unsigned long long mCpuGpuTimeDiff;
    unsigned long long mRealtimeMonotonicTimeDiff;
    std::vector<ShaderActivity> mVertexActivity;
    std::vector<ShaderActivity> mFragmentActivity;

    // Of the running capture, written by the sampling thread. The usage is read meanwhile (relaxed order).
    std::atomic<double> mCaptureGpuUsage;
    unsigned long long mCaptureCpuGpuTimeDiff;
    unsigned long long mCaptureRealtimeMonotonicTimeDiff;
    std::vector<ShaderActivity> mCaptureVertexActivity;
    std::vector<ShaderActivity> mCaptureFragmentActivity;

    RenderingApiType mApiType;

private:
    void clearPublished();
    void clearCapture();

    // On the sampling thread.

    /// The capture, from the source's initialisation to its last sample.
    void sample();

    /// Asks the source for a sample and keeps it.
    void takeSample();
};

}  // namespace core
