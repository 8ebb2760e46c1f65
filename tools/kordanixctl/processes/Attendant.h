#pragma once

#include <sys/types.h>

namespace control {

/// Something that `run` does while its program runs, on its only thread, whenever a descriptor of its own has
/// something to read.
class Attendant {
public:
    virtual ~Attendant() = default;

    /// The program has been started, as this process.
    virtual void onStarted(pid_t /*program*/) {}

    /// Closed on exec, so that the program does not get it; -1 while there is none. Asked before each wait.
    virtual int descriptor() const = 0;

    /// Takes what there is to read, and never waits; gives the descriptor up when it is at its end or broken.
    /// Does not throw. Signals are blocked meanwhile.
    virtual void attend() = 0;
};

}  // namespace control
