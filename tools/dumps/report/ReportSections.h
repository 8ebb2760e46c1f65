#pragma once

#include "dumps/Dump.h"
#include "dumps/Statistics.h"

#include <ostream>
#include <string>
#include <vector>

namespace dumps {

/// What the sections of a report are made from.
struct ReportData {
    const Dump& dump;
    FrameTimes times;              ///< not empty
    std::vector<double> sortedMs;  ///< of `times`
    FrameRateSummary summary;
    std::vector<double> elapsedSeconds;  ///< of every frame since the first
};

/// What the report is called: the program, its GPU, the size and the date, as far as the dump says.
std::string titleOf(const Dump& dump);

/// The sections, in the order of the page. One that has nothing to show writes nothing.
void writeHeading(const ReportData& data, std::ostream& out);
void writeTiles(const ReportData& data, std::ostream& out);
void writeFrameTimes(const ReportData& data, std::ostream& out);
void writeDistribution(const ReportData& data, std::ostream& out);
void writeValues(const ReportData& data, std::ostream& out);
void writePassesOfSlowestFrames(const ReportData& data, std::ostream& out);
void writeExplanations(const ReportData& data, std::ostream& out);

}  // namespace dumps
