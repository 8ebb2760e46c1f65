#include "core/HWcounterThread.h"

#include "utils/Thread.h"
#include "utils/Time.h"

#include <exception>

namespace core {

namespace {

constexpr std::uint32_t MIN_STEP_US = 500;

/// Empties a series and frees its memory. Does not write to one that has none, see startCapturing().
void release(std::vector<ShaderActivity>& series) {
    if (series.capacity() != 0) {
        std::vector<ShaderActivity>().swap(series);
    }
}

template <typename T>
void zero(T& figure) {
    if (figure != T{}) {
        figure = T{};
    }
}

}  // namespace

HWcounterThread::HWcounterThread(RenderingApiType api)
    : mInitState(CounterState::NOT_INITIALISED),
      mIsStopRequested(true),
      mIsCapturing(false),
      mCaptureDurationUs(0),
      mGpuUsage(0.0),
      mCpuGpuTimeDiff(0),
      mRealtimeMonotonicTimeDiff(0),
      mCaptureGpuUsage(0.0),
      mCaptureCpuGpuTimeDiff(0),
      mCaptureRealtimeMonotonicTimeDiff(0),
      mApiType(api) {}

HWcounterThread::~HWcounterThread() {
    destroy();
}

void HWcounterThread::init() {
    const int state = mInitState.load(std::memory_order_acquire);
    if (state == CounterState::READY || state == CounterState::UNAVAILABLE) {
        return;
    }
    clearPublished();
    clearCapture();
    mInitState.store(HWcounter::init(), std::memory_order_release);
}

void HWcounterThread::startCapturing(unsigned long durationMs) {
    const int state = mInitState.load(std::memory_order_acquire);
    if (state == CounterState::UNAVAILABLE || mIsCapturing.load(std::memory_order_acquire)) {
        return;
    }
    if (mThread.joinable()) {
        mThread.detach();
    }
    if (state != CounterState::READY) {
        // The new thread will initialise the source, which also clears the published figures. The layer may
        // be reading them by then. So they are cleared here, and the thread finds nothing left to clear.
        clearPublished();
    }
    clearCapture();
    mIsStopRequested.store(false, std::memory_order_relaxed);
    mIsCapturing.store(true, std::memory_order_relaxed);
    mCaptureDurationUs = static_cast<std::uint32_t>(durationMs * 1000);
    try {
        mThread = utils::startThread("kordanix-gpu", [this] { threadFunction(); });
    } catch (...) {
        mIsStopRequested.store(true, std::memory_order_relaxed);
        mIsCapturing.store(false, std::memory_order_relaxed);
        throw;
    }
}

void HWcounterThread::stopCapturing() {
    mIsStopRequested.store(true, std::memory_order_relaxed);
}

void HWcounterThread::finishCapturing() {
    joinThread();
    mGpuUsage = mCaptureGpuUsage.load(std::memory_order_relaxed);
    mCpuGpuTimeDiff = mCaptureCpuGpuTimeDiff;
    mRealtimeMonotonicTimeDiff = mCaptureRealtimeMonotonicTimeDiff;
    mVertexActivity = mCaptureVertexActivity;
    mFragmentActivity = mCaptureFragmentActivity;
}

void HWcounterThread::joinThread() {
    stopCapturing();
    if (mThread.joinable()) {
        mThread.join();
    }
}

void HWcounterThread::destroy() {
    joinThread();
    HWcounter::deInit();
    mInitState.store(CounterState::NOT_INITIALISED, std::memory_order_release);
}

bool HWcounterThread::getGpuUsage(double& usage) {
    if (mInitState.load(std::memory_order_acquire) != CounterState::READY) {
        return false;
    }
    if (mIsCapturing.load(std::memory_order_acquire)) {
        usage = mCaptureGpuUsage.load(std::memory_order_relaxed);
        return true;
    }
    return HWcounter::readGpuUsage(&usage);
}

void HWcounterThread::getGpuActivity(std::vector<ShaderActivity>& vertexActivity,
                                     std::vector<ShaderActivity>& fragmentActivity) {
    vertexActivity = mVertexActivity;
    fragmentActivity = mFragmentActivity;
}

void HWcounterThread::getCpuGpuTimeDiff(unsigned long long* diff) {
    *diff = mCpuGpuTimeDiff;
}

void HWcounterThread::getRealtimeMonotonictimeDiff(unsigned long long* diff) {
    *diff = mRealtimeMonotonicTimeDiff;
}

void HWcounterThread::threadFunction() {
    try {
        sample();
    } catch (const std::exception&) {
        // No memory for another sample: the capture ends with the samples that both series have.
        mCaptureVertexActivity.resize(mCaptureFragmentActivity.size());
    }
    mIsCapturing.store(false, std::memory_order_release);
}

void HWcounterThread::sample() {
    if (mInitState.load(std::memory_order_acquire) != CounterState::READY) {
        init();
    }
    if (mInitState.load(std::memory_order_acquire) != CounterState::READY) {
        clearCapture();
        mIsStopRequested.store(true, std::memory_order_relaxed);
        return;
    }
    std::uint32_t last = utils::getUtcTime_usec();
    mCaptureGpuUsage.store(0.0, std::memory_order_relaxed);
    if (mApiType == RenderingApiType::VULKAN) {
        HWcounter::getCpuGpuTimeDiff(&mCaptureCpuGpuTimeDiff);
    } else {
        HWcounter::getRealtimeMonotonictimeDiff(&mCaptureRealtimeMonotonicTimeDiff);
    }
    std::uint64_t total = 0;
    while (!mIsStopRequested.load(std::memory_order_relaxed)) {
        const std::uint32_t now = utils::getUtcTime_usec();
        const std::uint32_t step = now - last;
        if (step < MIN_STEP_US) {
            continue;
        }
        total += step;
        if (total > mCaptureDurationUs) {
            break;
        }
        takeSample();
        last = now;
    }
}

void HWcounterThread::takeSample() {
    unsigned long long timestamp = 0;
    double usage = mCaptureGpuUsage.load(std::memory_order_relaxed);
    double vertexActivity = 0.0;
    double fragmentActivity = 0.0;
    const bool isSampled = HWcounter::readGpuActivity(&timestamp, &usage, &vertexActivity, &fragmentActivity);
    mCaptureGpuUsage.store(usage, std::memory_order_relaxed);
    if (isSampled) {
        const double time = static_cast<double>(timestamp) / 1000000.0;
        mCaptureVertexActivity.push_back({time, static_cast<float>(vertexActivity)});
        mCaptureFragmentActivity.push_back({time, static_cast<float>(fragmentActivity)});
    }
}

void HWcounterThread::clearPublished() {
    zero(mGpuUsage);
    zero(mCpuGpuTimeDiff);
    zero(mRealtimeMonotonicTimeDiff);
    release(mVertexActivity);
    release(mFragmentActivity);
}

void HWcounterThread::clearCapture() {
    mCaptureGpuUsage.store(0.0, std::memory_order_relaxed);
    mCaptureCpuGpuTimeDiff = 0;
    mCaptureRealtimeMonotonicTimeDiff = 0;
    release(mCaptureVertexActivity);
    release(mCaptureFragmentActivity);
}

}  // namespace core
