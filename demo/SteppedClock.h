#pragma once

namespace demo {

/// Stops the wall clock and the monotonic clock of this process at `seconds` until the next call, so that
/// pictures depend only on the number of frames. The calling thread's clock stands still. Other threads see a
/// clock that advances by half a millisecond at each reading, so that a capture, which polls the clock,
/// always takes the same samples. The simulated device's time follows.
void setSteppedClock(double seconds);

}  // namespace demo
