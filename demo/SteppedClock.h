#pragma once

namespace demo {

/// Takes the place of the wall clock, and of the one that nobody sets, in this process and, from the first
/// call on, stands still between the calls: pictures then depend on nothing but the number of frames. Other
/// threads than the caller's see a clock that moves on by half a millisecond a reading, so that a capture,
/// which polls the clock, takes the same samples each time. The simulated device's time goes along.
void setSteppedClock(double seconds);

}  // namespace demo
