#pragma once

#include <cstdint>

/// The wall clock under the test's control. Other clocks, and the wall clock until it is set, are real.
namespace doubles {

/// From now on the wall clock stands at this many microseconds since the Unix epoch, on every thread.
void setWallClock(std::int64_t microseconds);
void advanceWallClock(std::int64_t microseconds);

/// With a step, every reading of a set clock moves it on by this much.
void setWallClockStep(std::int64_t microsecondsPerReading);

/// Back to the real clock.
void releaseWallClock();

}  // namespace doubles
