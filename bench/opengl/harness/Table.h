#pragma once

#include "Client.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace bench {

/// What was measured of one candidate in one mode, a value for each round.
struct Samples {
    std::string candidate;
    std::vector<double> swap;   ///< microseconds a frame
    std::vector<double> frame;  ///< microseconds a frame, the program's own part included
    std::vector<double> p50;    ///< of the intervals from frame to frame, milliseconds
    std::vector<double> p95;
    std::vector<double> p99;
    double instructions = 0.0;  ///< a frame
    double changed = 0.0;       ///< thousandths of the picture
};

/// The middle of the values, the mean of the two in the middle of an even number; 0 of none.
double median(std::vector<double> values);

/// The value that a share 0..1 of the values does not exceed; 0 of none.
double percentile(std::vector<double> values, double share);

/// One table in Markdown: a row for each candidate, the first of which is what the others are held against.
/// A difference is the median of the differences within the rounds.
void printTable(std::ostream& out, const Mode& mode, const std::vector<Samples>& rows);

/// The table of a paced mode: medians of the rounds' percentiles, and whether ours are met.
void printPacing(std::ostream& out, const Mode& mode, const std::vector<Samples>& rows);

/// The targets for our overlay in a mode without pixels, each as met or missed. Nothing when one of the
/// candidates they need was not measured.
void printTargets(std::ostream& out, const Mode& mode, const std::vector<Samples>& rows);

/// Every value of every round, as JSON.
void writeRounds(const std::string& path,
                 const std::vector<std::pair<std::string, std::vector<Samples>>>& modes);

}  // namespace bench
