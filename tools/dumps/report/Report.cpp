#include "dumps/report/Report.h"

#include "dumps/report/Html.h"
#include "dumps/report/ReportSections.h"
#include "dumps/report/ReportStyle.h"

#include <utility>

namespace dumps {

std::string writeReport(const Dump& dump, std::ostream& out) {
    FrameTimes times = frameTimes(dump);
    if (times.times.empty()) {
        return "the dump has no two frames in a row, so there are no frame times to report";
    }
    std::vector<double> sortedMs = sortedMilliseconds(times);
    const FrameRateSummary summary = summarize(dump, sortedMs, times.isMeasured);
    std::vector<double> elapsedSeconds = elapsedTimes(dump);
    for (double& time : elapsedSeconds) {
        time /= 1000.0;
    }
    const ReportData data = {dump, std::move(times), std::move(sortedMs), summary, std::move(elapsedSeconds)};
    out << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<title>"
        << escapeHtml(titleOf(dump)) << "</title>\n<style>" << REPORT_STYLE
        << "</style>\n</head>\n<body>\n<main>\n";
    writeHeading(data, out);
    writeTiles(data, out);
    writeFrameTimes(data, out);
    writeDistribution(data, out);
    writeValues(data, out);
    writePassesOfSlowestFrames(data, out);
    writeExplanations(data, out);
    out << "</main>\n</body>\n</html>\n";
    return {};
}

}  // namespace dumps
