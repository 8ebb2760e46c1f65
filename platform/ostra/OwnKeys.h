#pragma once

#include <ostra/Ostra.h>

namespace platform {

/// Presses a key from within this process: the next call of Ostra::receiveKeyEvents() returns it. Any thread.
void pressOwnKey(const Ostra::KeyEvent& key);

}  // namespace platform
