#pragma once

#include <chrono>

namespace demo {

/// Paces the frame loop: either in real time, or in steps of exactly one frame's length on the simulated
/// device's clock, as fast as it goes.
class Pace {
public:
    Pace(double rate, bool isFixedStep);

    void waitForNextFrame();

private:
    std::chrono::steady_clock::duration mFrame;
    bool mIsFixedStep;
    std::chrono::steady_clock::time_point mNext;
};

}  // namespace demo
