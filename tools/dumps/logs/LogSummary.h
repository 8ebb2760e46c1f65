#pragma once

#include "dumps/Dump.h"

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace dumps {

/// What a log says in a few figures. Rates are frames per second.
struct LogSummary {
    std::size_t frames = 0;
    std::uint64_t missingFrames = 0;
    double seconds = 0.0;
    std::optional<double> meanRate;
    double medianMs = 0.0;
    std::optional<double> low1Rate;
    std::optional<double> low01Rate;
    double longestMs = 0.0;
    double longestAtSeconds = 0.0;

    /// What the frames consisted of, shares of their time: the program's swap call, in which it waits for the
    /// screen or for earlier frames; the GPU, where its times are known; and the rest, the processor's.
    struct Parts {
        double swap = 0.0;
        std::optional<double> gpu;
        double processor = 0.0;
    };
    std::optional<Parts> parts;

    std::optional<double> overlayMs;  ///< in the overlay itself, mean of the frames
};

/// Nothing when the log has no frame time.
std::optional<LogSummary> summarizeLog(const Dump& log);

/// The frame times in milliseconds, in the order of the frames.
std::vector<double> logTimes(const Dump& log);

/// A rate as "59.8 fps"; "-" for none. The same in every locale.
std::string rateText(const std::optional<double>& rate);

/// Prints the figures, a line each, indented by two blanks. The same in every locale.
void printLogSummary(const LogSummary& summary, std::ostream& out);

}  // namespace dumps
