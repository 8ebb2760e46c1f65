#include "core/StateInfo.h"

#include "utils/SystemInfoHelper.h"

#include <ostra/Ostra.h>

#include <mutex>
#include <new>
#include <utility>

namespace core {

namespace {

constexpr int LAST_DEVICE_AT_60_FPS = 5;

float maxFpsOfDevice() {
    return utils::deviceModel > LAST_DEVICE_AT_60_FPS ? 120.0F : 60.0F;
}

void endDumpAndReleaseClocks() {
    // The listener and the rendering thread may get here at once; only one of them finishes the dump.
    if (StateInfo::mIsDumpingEnabled.exchange(false, std::memory_order_relaxed)) {
        Ostra::finishDumping();
    }
    StateInfo::unfixClock();
}

}  // namespace

int StateInfo::mVendor = utils::Vendor::UNKNOWN;
bool StateInfo::mIsWidgetsUpdated = true;
bool StateInfo::mIsGpuClockKHz = false;
float StateInfo::mMaxGpuClock = 0.0F;
std::atomic<int> StateInfo::mFixClockState{0};
bool StateInfo::mIsNeedToResetFps = false;
std::uint64_t StateInfo::mFrameNumber = 0;
std::atomic<bool> StateInfo::mIsDumpingEnabled{false};

// The control properties must exist before any other initialiser runs, whatever the link order, because a
// counter source may read one while the library is loaded. So the references are bound to static storage,
// which a constructor with the highest priority fills.

namespace {

template <typename T>
struct Room {
    alignas(SysProp<T>) unsigned char bytes[sizeof(SysProp<T>)];
};

Room<bool> gStatus;
Room<bool> gDevMode;
Room<bool> gFixClock;
Room<RenderingApiType> gRenderApi;
Room<std::string> gDebugProcessName;

template <typename T>
void create(SysProp<T>& prop, const char* name, T defaultValue = {}) {
    SysPropWatcher::addSysProp(*::new (&prop) SysProp<T>(name, std::move(defaultValue)));
}

constexpr int BEFORE_ALL_INITIALISERS = 101;

[[gnu::constructor(BEFORE_ALL_INITIALISERS)]] void createControlProperties() {
    create(StateInfo::mStatusProp, "debug.kordanix.status");
    create(StateInfo::mDevModeProp, "debug.kordanix.devmode");
    create(StateInfo::mFixClockProp, "debug.kordanix.fixclock");
    create(StateInfo::mRenderApiProp, "debug.kordanix.api");
    create(StateInfo::mDebugProcessNameProp, "debug.kordanix.proc");
}

}  // namespace

SysProp<bool>& StateInfo::mStatusProp = reinterpret_cast<SysProp<bool>&>(gStatus);
SysProp<bool>& StateInfo::mDevModeProp = reinterpret_cast<SysProp<bool>&>(gDevMode);
SysProp<bool>& StateInfo::mFixClockProp = reinterpret_cast<SysProp<bool>&>(gFixClock);
SysProp<RenderingApiType>& StateInfo::mRenderApiProp =
    reinterpret_cast<SysProp<RenderingApiType>&>(gRenderApi);
SysProp<std::string>& StateInfo::mDebugProcessNameProp =
    reinterpret_cast<SysProp<std::string>&>(gDebugProcessName);

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
    // Written only when it changes, because layers of two APIs may create their objects on different threads.
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
    // Runs once, and concurrent first callers wait. Like std::call_once, but later calls cost only a load.
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
