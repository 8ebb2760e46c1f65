#pragma once

#include <optional>

namespace control {

/// The pictures a second that the X server of this environment's DISPLAY shows, as its RandR extension says
/// it for the screen. Nothing without a server, the extension or their libraries, when it says nonsense, or
/// says nothing for half a second. Asks in a process of its own, since an X server that dies ends its client.
std::optional<int> screenRate();

}  // namespace control
