#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace control {

/// What became of one figure of the overlay on this machine.
struct MetricCheck {
    std::string_view metric;
    const char* path;
    std::string value;   ///< as the overlay would show it; empty when there is none
    std::string error;   ///< why there is none, in a few words
    std::string advice;  ///< what to do about it, a sentence
};

/// Reads every figure's file as the library does. (A simulated device is inside the process that asked for
/// it and is not seen from here.)
std::vector<MetricCheck> checkMetrics();

}  // namespace control
