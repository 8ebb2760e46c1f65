#include "scene/GpuCapture.h"

#include "core/StateInfo.h"
#include "utils/SystemInfoHelper.h"
#include "utils/Time.h"

#include <algorithm>
#include <system_error>
#include <thread>

namespace scene {

namespace {

constexpr std::uint32_t US_PER_MS = 1000;

/// A frame that took longer than this was interrupted: its length says nothing about the next one's.
constexpr std::uint32_t LONGEST_CAPTURE_MS = 1000;

}  // namespace

GpuCapture::GpuCapture(core::RenderingApiType api, RenderPassSource* passes)
    : mFrame(0, {}), mCounters(api), mPasses(passes) {}

bool GpuCapture::hasCounters() {
    return core::StateInfo::mVendor != utils::Vendor::UNKNOWN;
}

bool GpuCapture::onFrame() {
    const std::uint32_t now = utils::getUtcTime_usec();
    const std::uint32_t frameUs = mHasFrameStart ? now - mFrameStartUs : 0;
    mHasFrameStart = true;
    mFrameStartUs = now;

    if (mIsRunning) {
        const bool isPending = arePassesPending();
        if (isPending || mCounters.mIsCapturing.load(std::memory_order_acquire)) {
            return false;
        }
        finish();
        return true;
    }
    if (core::StateInfo::isNeedToCaptureData()) {
        start(frameUs);
    }
    return false;
}

void GpuCapture::settle() const {
    while (mIsRunning && mCounters.mIsCapturing.load(std::memory_order_acquire)) {
        std::this_thread::yield();
    }
}

void GpuCapture::start(std::uint32_t frameUs) {
    try {
        mCounters.startCapturing(std::clamp(frameUs / US_PER_MS, std::uint32_t{1}, LONGEST_CAPTURE_MS));
    } catch (const std::system_error&) {
        // No thread: the counters end at once, without shader activity.
    }
    mProgress = RenderPassSource::Progress::NONE;
    if (mPasses != nullptr) {
        mPasses->startCapture();
        mProgress = RenderPassSource::Progress::PENDING;
    }
    mFramesWaited = 0;
    mIsRunning = true;
}

bool GpuCapture::arePassesPending() {
    if (mProgress != RenderPassSource::Progress::PENDING) {
        return false;
    }
    mProgress = mPasses->advanceCapture();
    if (mProgress == RenderPassSource::Progress::PENDING && ++mFramesWaited == LONGEST_WAIT) {
        mPasses->abandonCapture();
        mProgress = RenderPassSource::Progress::NONE;
    }
    return mProgress == RenderPassSource::Progress::PENDING;
}

void GpuCapture::finish() {
    mIsRunning = false;
    mCounters.finishCapturing();
    mCounters.getGpuActivity(mVertexActivity, mFragmentActivity);
    // The post-swap hook counts frames, so this is the number of the last swapped one.
    mFrame = gui::FrameData(static_cast<unsigned int>(core::StateInfo::mFrameNumber), {});
    const Reading start = mVertexActivity.empty() ? Reading() : Reading(mVertexActivity.front().time);
    if (mProgress == RenderPassSource::Progress::READY && !mPasses->readFrame(mFrame, start)) {
        mFrame.mRenderPasses.clear();
    }
}

}  // namespace scene
