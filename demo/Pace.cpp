#include "Pace.h"

#include <thread>

namespace demo {

namespace {

/// When the loop is later than this, it does not make up for the lost frames.
constexpr std::chrono::milliseconds LONGEST_DELAY(100);

}  // namespace

Pace::Pace() : mStart(std::chrono::steady_clock::now()), mNext(mStart) {}

void Pace::waitForNextFrame(double rate) {
    mNext += std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(1.0 / rate));
    const auto now = std::chrono::steady_clock::now();
    if (now > mNext + LONGEST_DELAY) {
        mNext = now;
    }
    std::this_thread::sleep_until(mNext);
}

double Pace::elapsed() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - mStart).count();
}

}  // namespace demo
