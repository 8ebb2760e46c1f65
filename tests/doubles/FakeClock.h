#pragma once

#include <atomic>
#include <cstdint>

/// The wall clock under the test's control, and with it the clock that nobody sets. Other clocks, and the
/// wall clock until it is set, are real.
namespace doubles {

struct WallClock {
    std::atomic<bool> isSet{false};
    std::atomic<std::int64_t> now{0};
    std::atomic<std::int64_t> step{0};
};

inline WallClock gWallClock;

/// From now on the wall clock stands at this many microseconds since the Unix epoch, on every thread.
inline void setWallClock(std::int64_t microseconds) {
    gWallClock.now = microseconds;
    gWallClock.isSet = true;
}

inline void advanceWallClock(std::int64_t microseconds) {
    gWallClock.now += microseconds;
}

/// With a step, every reading of a set clock moves it on by this much.
inline void setWallClockStep(std::int64_t microsecondsPerReading) {
    gWallClock.step = microsecondsPerReading;
}

/// Back to the real clock.
inline void releaseWallClock() {
    gWallClock.isSet = false;
    gWallClock.step = 0;
}

}  // namespace doubles
