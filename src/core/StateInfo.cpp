#include "core/StateInfo.h"

#include "utils/SystemInfoHelper.h"

#include <ostra/Ostra.h>

#include <mutex>

namespace core {

namespace {

constexpr int LAST_DEVICE_AT_60_FPS = 5;

float maxFpsOfDevice() {
    return utils::deviceModel > LAST_DEVICE_AT_60_FPS ? 120.0F : 60.0F;
}

void endDumpAndReleaseClocks() {
    // The listener and the rendering thread may come here at once; only one of them finishes the dump.
    if (StateInfo::mIsDumpingEnabled.exchange(false, std::memory_order_relaxed)) {
        Ostra::finishDumping();
    }
    StateInfo::unfixClock();
}

}  // namespace

int StateInfo::mVendor = 2;
bool StateInfo::mIsWidgetsUpdated = true;
bool StateInfo::mIsGpuClockKHz = false;
float StateInfo::mMaxGpuClock = 0.0F;
std::atomic<int> StateInfo::mFixClockState{0};
bool StateInfo::mIsNeedToResetFps = false;
std::uint64_t StateInfo::mFrameNumber = 0;
std::atomic<bool> StateInfo::mIsDumpingEnabled{false};

SysProp<bool>& StateInfo::mStatusProp = SysPropWatcher::createSysProp<bool>("debug.kordanix.status", false);
SysProp<bool>& StateInfo::mDevModeProp = SysPropWatcher::createSysProp<bool>("debug.kordanix.devmode", false);
SysProp<bool>& StateInfo::mFixClockProp =
    SysPropWatcher::createSysProp<bool>("debug.kordanix.fixclock", false);
SysProp<RenderingApiType>& StateInfo::mRenderApiProp =
    SysPropWatcher::createSysProp<RenderingApiType>("debug.kordanix.api", static_cast<RenderingApiType>(0));
SysProp<std::string>& StateInfo::mDebugProcessNameProp =
    SysPropWatcher::createSysProp<std::string>("debug.kordanix.proc", {});

StateInfo::StateInfo() {
    init();
}

StateInfo::StateInfo(NoGpu /*without*/) : mMaxFps(maxFpsOfDevice()) {}

void StateInfo::init() {
    mMaxFps = maxFpsOfDevice();
    resetFps();
    mPrevCpuUserTicks = 0;
    mPrevCpuSystemTicks = 0;
    checkGPUClockUnit();
    // Written only when it changes: layers of two APIs may make their objects on threads of their own.
    const int vendor = utils::checkVendor();
    if (vendor != mVendor) {
        mVendor = vendor;
    }
}

void StateInfo::onAttached(std::mutex& mutex) {
    Ostra::registerAppBecomeBackgroundListener([&mutex] {
        const std::lock_guard<std::mutex> lock(mutex);
        endDumpAndReleaseClocks();
    });
    if (mFixClockProp.getValue()) {
        fixClock();
    } else {
        unfixClock();
    }
}

void StateInfo::onDetached() {
    endDumpAndReleaseClocks();
}

bool StateInfo::isOverlayEnabled(RenderingApiType api) {
    // Once, and concurrent first callers wait: as std::call_once, but afterwards only a load.
    [[maybe_unused]] static const bool isRead = [] {
        SysPropWatcher::forceReadAllProps();
        return true;
    }();
    if (!mStatusProp.getValue() || mRenderApiProp.getValue() != api) {
        return false;
    }
    const std::string processName = utils::getProcessName();
    return processName == mDebugProcessNameProp.getValue();
}

}  // namespace core
