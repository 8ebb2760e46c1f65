#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace control {

/// What became of one of the driver's files that the library reads itself.
struct MetricCheck {
    std::string_view metric;
    const char* path;
    std::string value;   ///< as the overlay would show it; empty when there is none
    std::string error;   ///< why there is none, in a few words
    std::string advice;  ///< what to do about it, a sentence
    bool isMissing;      ///< there is no such file
};

/// Reads the files below /sys/kernel/gpu as the library does, which asks them before the machine's other
/// sources. Empty where the kernel has none of them. (A simulated device is inside the process that asked for
/// it and is not seen from here.)
std::vector<MetricCheck> checkMetrics();

}  // namespace control
