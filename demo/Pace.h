#pragma once

#include <chrono>

namespace demo {

/// Keeps the frame loop at its rate in real time.
class Pace {
public:
    explicit Pace(double rate);

    void waitForNextFrame();

    /// Seconds since the start.
    double elapsed() const;

private:
    std::chrono::steady_clock::duration mFrame;
    std::chrono::steady_clock::time_point mStart;
    std::chrono::steady_clock::time_point mNext;
};

}  // namespace demo
