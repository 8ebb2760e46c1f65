#pragma once

#include <cstdint>

namespace client {

/// Replaces the clocks that the calling thread and every library in this process see: they stand still within
/// a frame and advance by `frame` nanoseconds at each advanceFrameClock(). So an overlay's periodic work
/// comes as often as in a program with that frame rate, however fast this one really runs. Other threads
/// still see the real time; the processor time of every thread stays real.
void startFrameClock(std::int64_t frame);

/// Ends a frame. Call it on the thread that started the clock; without a clock it does nothing.
void advanceFrameClock();

/// Returns the calling thread's processor time in nanoseconds.
std::int64_t threadTime();

}  // namespace client
