#pragma once

#include "keys/KeyChords.h"

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace control {

/// Who is told of the keys, and which windows count.
struct KeyTarget {
    /// Puts there what the keys are to do. Returns false, and leaves that alone, when it is as it was at the
    /// call before. Asked at every press, and not slow.
    std::function<bool(std::vector<KeyChords::Binding>&)> updateBindings;
    std::function<bool(pid_t)> isMember;      ///< whether a process belongs to the program
    std::function<void(KeyAction)> onAction;  ///< keys pressed meanwhile are looked at after it
};

/// Why the keyboard of DISPLAY's X server cannot be listened to, as the end of a sentence; empty when it can.
/// Hangs and ends like listenForKeys().
std::string keyListenerObstacle();

/// Listens to the keyboard of DISPLAY's X server, and passes on the chords that are pressed while a window of
/// a member has the focus. Takes no key from anybody. Returns when it cannot listen, or never; may hang while
/// a server is silent, and ends the process when one dies.
void listenForKeys(const KeyTarget& target);

}  // namespace control
