#pragma once

#include <ostra/Ostra.h>

namespace platform {

/// Presses a key of this process itself: the next call of Ostra::receiveKeyEvents() finds it. Any thread.
void pressOwnKey(const Ostra::KeyEvent& key);

}  // namespace platform
