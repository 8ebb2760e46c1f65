#include "SteppedClock.h"

#include "simulator/DeviceSimulator.h"

#include <dlfcn.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <ctime>

namespace {

constexpr std::int64_t NS_PER_SECOND = 1000000000;

/// The clock's time at the start: any time will do, as long as it is always the same.
constexpr std::int64_t START_NS = 1700000000 * NS_PER_SECOND;

/// Each reading on another thread advances that thread's clock by this much.
constexpr std::int64_t OTHER_THREADS_STEP_NS = 500000;

/// 0 while the real clock is in place.
std::atomic<std::int64_t> steppedNs{0};
thread_local bool isStepping = false;
thread_local std::int64_t readings = 0;

}  // namespace

namespace demo {

void setSteppedClock(double seconds) {
    isStepping = true;
    steppedNs = START_NS + std::llround(seconds * static_cast<double>(NS_PER_SECOND));
    simulator::setTime(seconds);
}

}  // namespace demo

// The linker finds it before the C library's.
extern "C" int clock_gettime(clockid_t clock, struct timespec* time) noexcept {
    const std::int64_t stepped = steppedNs;
    if ((clock == CLOCK_REALTIME || clock == CLOCK_MONOTONIC_RAW) && stepped != 0) {
        const std::int64_t now = isStepping ? stepped : stepped + ++readings * OTHER_THREADS_STEP_NS;
        time->tv_sec = static_cast<std::time_t>(now / NS_PER_SECOND);
        time->tv_nsec = static_cast<long>(now % NS_PER_SECOND);
        return 0;
    }
    static auto* const real =
        reinterpret_cast<int (*)(clockid_t, struct timespec*)>(dlsym(RTLD_NEXT, "clock_gettime"));
    return real(clock, time);
}
