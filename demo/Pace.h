#pragma once

#include <chrono>

namespace demo {

/// Keeps the frame loop at a rate in real time.
class Pace {
public:
    Pace();

    /// `rate` is this frame's, in frames per second.
    void waitForNextFrame(double rate);

    /// Seconds since the start.
    double elapsed() const;

private:
    std::chrono::steady_clock::time_point mStart;
    std::chrono::steady_clock::time_point mNext;
};

}  // namespace demo
