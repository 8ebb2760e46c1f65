#pragma once

#include <optional>

namespace control {

/// The pictures a second that the X server of this environment's DISPLAY shows, as its RandR extension says
/// it for the screen. Nothing without a server, the extension or their libraries, or when it says nonsense.
std::optional<int> screenRate();

}  // namespace control
