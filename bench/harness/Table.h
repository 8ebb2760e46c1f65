#pragma once

#include "Client.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace bench {

/// The measurements of one candidate in one mode, a value for each round.
struct Samples {
    std::string candidate;
    std::vector<double> swap;   ///< microseconds a frame
    std::vector<double> frame;  ///< microseconds a frame, including the program's own part
    std::vector<double> p50;    ///< median interval from frame to frame, milliseconds
    std::vector<double> p95;
    std::vector<double> p99;
    double instructions = 0.0;  ///< a frame
    double changed = 0.0;       ///< thousandths of the picture
};

/// The middle value, or the mean of the two middle values; 0 without values.
double median(std::vector<double> values);

/// The value that a share (0..1) of the values does not exceed; 0 without values.
double percentile(std::vector<double> values, double share);

/// Prints a Markdown table with a row for each candidate; the first one is the reference for the others. A
/// difference is the median of the differences within the rounds.
void printTable(std::ostream& out, const Mode& mode, const std::vector<Samples>& rows);

/// Prints the table of a paced mode: the medians of the rounds' percentiles, and whether we meet our targets.
void printPacing(std::ostream& out, const Mode& mode, const std::vector<Samples>& rows);

/// Prints whether our overlay meets each target in a mode without pixels. Prints nothing when a candidate
/// that they refer to was not measured.
void printTargets(std::ostream& out, const Mode& mode, const std::vector<Samples>& rows);

/// Writes every value of every round as JSON.
void writeRounds(const std::string& path,
                 const std::vector<std::pair<std::string, std::vector<Samples>>>& modes);

}  // namespace bench
