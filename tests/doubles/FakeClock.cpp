#include "doubles/FakeClock.h"

#include <dlfcn.h>

#include <atomic>
#include <ctime>

namespace {

std::atomic<bool> isSet{false};
std::atomic<std::int64_t> now{0};
std::atomic<std::int64_t> step{0};

}  // namespace

namespace doubles {

void setWallClock(std::int64_t microseconds) {
    now = microseconds;
    isSet = true;
}

void advanceWallClock(std::int64_t microseconds) {
    now += microseconds;
}

void setWallClockStep(std::int64_t microsecondsPerReading) {
    step = microsecondsPerReading;
}

void releaseWallClock() {
    isSet = false;
    step = 0;
}

}  // namespace doubles

extern "C" int clock_gettime(clockid_t clock, struct timespec* time) noexcept {
    if (clock == CLOCK_REALTIME && isSet) {
        const std::int64_t reading = now.fetch_add(step);
        time->tv_sec = static_cast<std::time_t>(reading / 1000000);
        time->tv_nsec = static_cast<long>(reading % 1000000 * 1000);
        return 0;
    }
    static const auto realClock =
        reinterpret_cast<int (*)(clockid_t, struct timespec*)>(dlsym(RTLD_NEXT, "clock_gettime"));
    return realClock(clock, time);
}
