#include "core/StateInfo.h"
#include "utils/SystemInfoHelper.h"

#include <ostra/Ostra.h>

namespace core {

namespace {

constexpr int VENDOR_COUNT = 2;
constexpr int DEVICE_COUNT = 9;

struct ClockPair {
    std::uint64_t cpu;
    std::uint64_t gpu;  ///< MHz for Mali; for Adreno as the companion library takes it
};

/// One row per device index: Mali, Adreno.
constexpr ClockPair sFixClockTable[DEVICE_COUNT][VENDOR_COUNT] = {
    {{1170000, 338}, {1459200, 414000000}},  //
    {{1170000, 338}, {1459200, 414000000}},  //
    {{1378000, 377}, {1708800, 427000000}},  //
    {{1378000, 377}, {1708800, 427000000}},  //
    {{0, 0}, {1708800, 427000000}},          //
    {{0, 0}, {1708800, 427000000}},          //
    {{1687587, 377}, {1747200, 441600000}},  //
    {{1687587, 377}, {1747200, 441600000}},  //
    {{0, 0}, {1747200, 441600000}},
};

ClockPair clocksOfDevice(int vendor) {
    const bool isKnown =
        vendor >= 0 && vendor < VENDOR_COUNT && utils::deviceModel >= 0 && utils::deviceModel < DEVICE_COUNT;
    return isKnown ? sFixClockTable[utils::deviceModel][vendor] : ClockPair{0, 0};
}

}  // namespace

std::uint64_t StateInfo::getCPUFixClock() {
    return clocksOfDevice(mVendor).cpu;
}

std::uint64_t StateInfo::getGPUFixClock() {
    const bool isInKHz = mVendor == utils::Vendor::MALI && checkGPUClockUnit() && mIsGpuClockKHz;
    return clocksOfDevice(mVendor).gpu * (isInKHz ? 1000 : 1);
}

void StateInfo::fixClock() {
    const std::uint64_t cpuClock = getCPUFixClock();
    const std::uint64_t gpuClock = getGPUFixClock();
    const bool isFixed = Ostra::fixClock(cpuClock, gpuClock);
    mFixClockState.store(isFixed ? CLOCKS_FIXED : CLOCKS_REFUSED, std::memory_order_relaxed);
}

void StateInfo::unfixClock() {
    Ostra::unfixClock();
    mFixClockState.store(CLOCKS_RELEASED, std::memory_order_relaxed);
}

int StateInfo::getFixClockState() {
    return mFixClockState.load(std::memory_order_relaxed);
}

}  // namespace core
