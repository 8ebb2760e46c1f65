#include "doubles/FakeClock.h"

#include <dlfcn.h>

#include <ctime>

extern "C" int clock_gettime(clockid_t clock, struct timespec* time) noexcept {
    doubles::WallClock& wall = doubles::gWallClock;
    if ((clock == CLOCK_REALTIME || clock == CLOCK_MONOTONIC_RAW) && wall.isSet) {
        const std::int64_t reading = wall.now.fetch_add(wall.step);
        time->tv_sec = static_cast<std::time_t>(reading / 1000000);
        time->tv_nsec = static_cast<long>(reading % 1000000 * 1000);
        return 0;
    }
    static const auto realClock =
        reinterpret_cast<decltype(&clock_gettime)>(dlsym(RTLD_NEXT, "clock_gettime"));
    return realClock(clock, time);
}
