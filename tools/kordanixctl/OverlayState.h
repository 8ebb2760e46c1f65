#pragma once

#include <string>
#include <string_view>

/// What the properties make of the overlay.
namespace control {

/// What the library makes of one of its properties, for people.
std::string displayedValue(std::string_view shortName);

/// Why a process of this name does not show the overlay: "does not show the overlay, which is switched off".
/// Empty when it does, if its graphics API is the one that is set.
std::string overlayObstacle(const std::string& processName);

}  // namespace control
