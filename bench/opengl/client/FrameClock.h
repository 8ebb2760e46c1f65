#pragma once

#include <cstdint>

namespace client {

/// The clocks that the calling thread and every library in this process see, from now on: standing still
/// within a frame and going on by `frame` nanoseconds at each advance(). What an overlay does every so often
/// then comes as often as in a program of that frame rate, however fast this one runs or a tool runs it.
/// Other threads keep the real time, as does every thread's processor time.
void startFrameClock(std::int64_t frame);

/// The end of a frame; only on the thread that started the clock. Nothing happens without a clock started.
void advanceFrameClock();

/// The calling thread's processor time in nanoseconds.
std::int64_t threadTime();

}  // namespace client
