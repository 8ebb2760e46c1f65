#include "FrameClock.h"

#include <dlfcn.h>
#include <sys/time.h>

#include <atomic>
#include <ctime>

namespace client {
namespace {

using ClockGetTime = int (*)(clockid_t, timespec*);

constexpr std::int64_t SECOND = 1'000'000'000;

thread_local std::int64_t gFrame = 0;
thread_local std::int64_t gElapsed = 0;

int realClock(clockid_t clock, timespec* time) {
    // Libraries may ask for the time while they are loaded, even before ours is; so no static with a
    // constructor.
    static std::atomic<ClockGetTime> real{nullptr};
    ClockGetTime function = real.load(std::memory_order_relaxed);
    if (function == nullptr) {
        function = reinterpret_cast<ClockGetTime>(dlsym(RTLD_NEXT, "clock_gettime"));
        real.store(function, std::memory_order_relaxed);
    }
    return function(clock, time);
}

bool isWallClock(clockid_t clock) {
    switch (clock) {
        case CLOCK_REALTIME:
        case CLOCK_REALTIME_COARSE:
        case CLOCK_MONOTONIC:
        case CLOCK_MONOTONIC_COARSE:
        case CLOCK_MONOTONIC_RAW:
        case CLOCK_BOOTTIME:
            return true;
        default:
            return false;
    }
}

/// The time at which each clock was stopped, by the clock's number.
thread_local std::int64_t gStart[CLOCK_BOOTTIME + 1];

std::int64_t nanoseconds(clockid_t clock) {
    timespec time{};
    realClock(clock, &time);
    return time.tv_sec * SECOND + time.tv_nsec;
}

}  // namespace

void startFrameClock(std::int64_t frame) {
    for (clockid_t clock = 0; clock <= CLOCK_BOOTTIME; ++clock) {
        if (isWallClock(clock)) {
            gStart[clock] = nanoseconds(clock);
        }
    }
    gElapsed = 0;
    gFrame = frame;
}

void advanceFrameClock() {
    gElapsed += gFrame;
}

std::int64_t threadTime() {
    return nanoseconds(CLOCK_THREAD_CPUTIME_ID);
}

}  // namespace client

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* time) noexcept {
    if (client::gFrame == 0 || !client::isWallClock(clock)) {
        return client::realClock(clock, time);
    }
    const std::int64_t now = client::gStart[clock] + client::gElapsed;
    time->tv_sec = now / client::SECOND;
    time->tv_nsec = now % client::SECOND;
    return 0;
}

extern "C" __attribute__((visibility("default"))) int gettimeofday(timeval* time, void*) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    time->tv_sec = now.tv_sec;
    time->tv_usec = now.tv_nsec / 1000;
    return 0;
}
