#pragma once

#include "scene/Reading.h"

#include <string>

namespace scene {

/// What is shown for a figure that cannot be read.
extern const char* const NOT_AVAILABLE;

/// Figures as the overlay writes them, in characters that the embedded font has and the same in every locale.
/// An empty, a negative and an infinite reading and one that is no number give NOT_AVAILABLE.

/// A frame rate with one decimal: "59.9".
std::string formatRate(Reading framesPerSecond);

/// A rounded percentage: "43%".
std::string formatPercent(Reading percent);

/// A rounded whole number without a unit: "585".
std::string formatWhole(Reading number);

/// A rounded clock: "598MHz".
std::string formatMegahertz(Reading megahertz);

/// Degrees Celsius, rounded: "45C".
std::string formatTemperature(Reading celsius);

/// Bytes in the unit that keeps the text at five or six characters: "3.7MB", "123MB", "12.3GB" (of 1024
/// times 1024 and 1024 times 1024 times 1024 bytes).
std::string formatBytes(Reading bytes);

}  // namespace scene
