#pragma once

#include <fcntl.h>

namespace privilege {

/// No file descriptor has this number: fcntl() on it fails, and shows in a trace which phase begins.
constexpr int MARKER = 0x4B4F5244;

inline void beginPhase(int phase) {
    fcntl(MARKER, F_SETOWN, phase);
}

/// What privilege_host does, one after the other, each after frames that settle what was published.
enum Phase {
    BEFORE_MAIN,
    SETTING_UP,  ///< also between any two of the others
    SWITCHED_OFF,
    OTHER_API,
    OTHER_PROCESS,
    BETWEEN_REFRESHES,
    REFRESHES,         ///< each frame is one
    MEMORY_REFRESHES,  ///< the same with the widget of memory figures as well
    CAPTURES,          ///< the key for a capture in each frame; there are no counters, as was found before
    DUMPING,
    LOOKING_ON,  ///< the host looks at itself; nothing of this is the overlay's
};

/// Frames of every phase that has a budget.
constexpr unsigned FRAMES = 100;

}  // namespace privilege
