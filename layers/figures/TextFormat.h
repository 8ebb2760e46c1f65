#pragma once

#include "figures/Reading.h"

#include <string>

namespace figures {

struct Figure;

/// What is shown for a figure that cannot be read.
extern const char* const NOT_AVAILABLE;

// Values as the overlay writes them, in characters that the embedded font has and the same in every locale.
// An empty, a negative and an infinite reading and one that is no number give NOT_AVAILABLE.

/// As the catalogue has it, without the label.
std::string format(const Figure& figure, const Reading& reading);

/// A rounded number: formatNumber(42.6, 0, "%") is "43%".
std::string formatNumber(const Reading& reading, int decimals, const char* suffix);

/// Bytes in the unit that keeps the text at five or six characters: "3.7MB", "123MB", "12.3GB" (of 1024
/// times 1024 and 1024 times 1024 times 1024 bytes).
std::string formatBytes(const Reading& bytes);

}  // namespace figures
