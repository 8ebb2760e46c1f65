#pragma once

#include "dumps/Dump.h"
#include "dumps/logs/Bootstrap.h"
#include "dumps/logs/LogSummary.h"

#include <array>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace dumps {

/// Two logs beside each other, as from before and after a change.
struct Comparison {
    std::array<const Dump*, 2> logs = {};
    std::array<LogSummary, 2> summaries;
    std::array<std::vector<double>, 2> times;  ///< milliseconds, in the order of the frames

    RateDifference mean;
    RateDifference low1;   ///< over the slowest 1 %
    RateDifference low01;  ///< over the slowest 0.1 %
};

/// The logs must outlive the result. Nothing, with the reason in `error`, when one has no frame time.
std::optional<Comparison> compareLogs(const Dump& first, const Dump& second, std::string& error);

/// In a few words: "no difference beyond noise", "slower, by more than noise", "too few frames to tell".
std::string verdictOf(const RateDifference& difference);

/// "-8.9 to -7.5 %"; empty when it is not known.
std::string intervalText(const RateDifference& difference);

/// "-8.2 %".
std::string changeText(double change);

/// One sentence on the whole.
std::string conclusionOf(const Comparison& comparison);

/// A table for a terminal.
void printComparison(const Comparison& comparison, std::ostream& out);

/// Whether the second log is slower by more than `share` (0.03 is 3 %), and by more than noise, in its mean
/// or in the slowest 1 % of its frames.
bool isSlower(const Comparison& comparison, double share);

}  // namespace dumps
