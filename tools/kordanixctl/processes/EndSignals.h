#pragma once

#include <chrono>
#include <csignal>

namespace control {

/// Blocks the signals that usually end a program (SIGINT, SIGTERM, SIGHUP) for the calling thread and those
/// that it starts, so that they leave no file behind. One that has come takes effect when the object that was
/// made first ends. Each object belongs to its thread.
class EndSignals {
public:
    EndSignals();
    ~EndSignals();
    EndSignals(const EndSignals&) = delete;
    EndSignals& operator=(const EndSignals&) = delete;

    /// Sleeps for that long; false, at once, when a signal asks this program to end.
    bool wait(std::chrono::nanoseconds time) const;

private:
    sigset_t mSignals = {};
    sigset_t mPrevious = {};
};

}  // namespace control
