#pragma once

#include "figures/Reading.h"

#include <string>

namespace figures {

struct Figure;

/// The text for a figure that cannot be read.
extern const char* const NOT_AVAILABLE;

// Values as the overlay writes them, in characters of the embedded font, the same in every locale. An empty,
// negative, infinite or NaN reading gives NOT_AVAILABLE.

/// Formats the figure as the catalogue says, without the label.
std::string format(const Figure& figure, const Reading& reading);

/// Formats the figure and the top of its scale: "3.7/7.8GB", "812MB/7.8GB".
std::string formatWithTop(const Figure& figure, const Reading& reading, double top);

/// Formats a rounded number: formatNumber(42.6, 0, "%") is "43%". From 1,000 on it has no decimals.
std::string formatNumber(const Reading& reading, int decimals, const char* suffix);

/// Formats bytes in the unit that gives five or six characters: "3.7MB", "123MB", "12.3GB" (of 1024 times
/// 1024 and 1024 times 1024 times 1024 bytes).
std::string formatBytes(const Reading& bytes);

}  // namespace figures
