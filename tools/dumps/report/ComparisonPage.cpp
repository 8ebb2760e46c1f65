#include "dumps/report/ComparisonPage.h"

#include "dumps/Statistics.h"
#include "dumps/report/Charts.h"
#include "dumps/report/Html.h"
#include "dumps/report/ReportStyle.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace dumps {

namespace {

constexpr const char* LETTERS[] = {"A", "B"};

void writeRow(const std::string& name, const std::array<std::string, 5>& cells, std::ostream& out) {
    out << "<tr><td>" << name << "</td>";
    for (const std::string& cell : cells) {
        out << "<td>" << cell << "</td>";
    }
    out << "</tr>\n";
}

std::string rateCell(const std::optional<double>& rate) {
    return rate ? fixedPoint(*rate, 1) + " fps" : "&ndash;";
}

void writeRates(const char* name, const RateDifference& difference, std::ostream& out) {
    writeRow(name,
             {rateCell(difference.first), rateCell(difference.second), changeText(difference.change),
              intervalText(difference), verdictOf(difference)},
             out);
}

void writeTimes(const char* name, double first, double second, std::ostream& out) {
    writeRow(name,
             {fixedPoint(first, 2) + " ms", fixedPoint(second, 2) + " ms",
              first > 0.0 ? changeText(second / first - 1.0) : std::string(), "", ""},
             out);
}

std::string partText(const std::optional<double>& share) {
    return share ? fixedPoint(*share * 100.0, 0) + " %" : "N/A";
}

void writeParts(const Comparison& comparison, std::ostream& out) {
    const auto& first = comparison.summaries[0].parts;
    const auto& second = comparison.summaries[1].parts;
    if (!first || !second) {
        return;
    }
    writeRow("waited for the screen or earlier frames",
             {partText(first->swap), partText(second->swap), "", "", ""}, out);
    writeRow("waited for graphics", {partText(first->gpu), partText(second->gpu), "", "", ""}, out);
    writeRow("waited for the processor",
             {partText(first->processor), partText(second->processor), "", "", ""}, out);
}

void writeFigures(const Comparison& comparison, std::ostream& out) {
    const auto& [first, second] = comparison.summaries;
    out << "<section class=\"card\"><h2>Figures</h2>\n<table "
           "class=\"names\"><tr><th></th><th>A</th><th>B</th><th>Change</th>"
           "<th>95 % between</th><th></th></tr>\n";
    writeRates("mean frame rate", comparison.mean, out);
    writeRates("1 % low", comparison.low1, out);
    writeRates("0.1 % low", comparison.low01, out);
    writeTimes("median frame time", first.medianMs, second.medianMs, out);
    writeTimes("longest frame", first.longestMs, second.longestMs, out);
    if (first.overlayMs && second.overlayMs) {
        writeTimes("in the overlay itself", *first.overlayMs, *second.overlayMs, out);
    }
    writeParts(comparison, out);
    out << "</table></section>\n";
}

/// The top of a scale that shows all but a few very slow frames of either.
double scaleTop(const Comparison& comparison) {
    double top = 0.1;
    for (const std::vector<double>& times : comparison.times) {
        std::vector<double> sorted = times;
        std::sort(sorted.begin(), sorted.end());
        const double bulk = std::max(percentile(sorted, 50.0) * 3.0, percentile(sorted, 99.0) * 1.25);
        top = std::max(top, std::min(sorted.back() * 1.05, bulk));
    }
    const double step = niceStep(top / 5.0);
    return std::ceil(top / step) * step;
}

void writeOverTime(const Comparison& comparison, std::size_t log, double top, std::ostream& out) {
    const Dump& dump = *comparison.logs[log];
    std::vector<double> seconds = elapsedTimes(dump);
    for (double& time : seconds) {
        time /= MS_PER_SECOND;
    }
    std::vector<double> milliseconds(dump.frames.size(), std::nan(""));
    for (const FrameTime& time : frameTimes(dump).times) {
        milliseconds[time.frame] = time.milliseconds;
    }
    out << "<section class=\"card wide\"><h2>Frame time of " << LETTERS[log] << "</h2>\n<p class=\"note\">"
        << escapeHtml(dump.folder) << "</p>\n";
    drawTimeChart({1100.0,
                   200.0,
                   "Frame time over time",
                   seconds,
                   milliseconds,
                   0.0,
                   top,
                   "ms",
                   {{MS_PER_SECOND / 30.0, "30 fps"},
                    {MS_PER_SECOND / 60.0, "60 fps"},
                    {MS_PER_SECOND / 120.0, "120 fps"}},
                   {},
                   {}},
                  out);
    out << "</section>\n";
}

void writeDistributions(const Comparison& comparison, std::ostream& out) {
    out << "<div class=\"pair\">\n";
    for (std::size_t i = 0; i < comparison.times.size(); ++i) {
        std::vector<double> sorted = comparison.times[i];
        std::sort(sorted.begin(), sorted.end());
        out << "<section class=\"card\"><h2>Distribution of " << LETTERS[i]
            << "</h2>\n<p class=\"note\">Frames by their frame time in ms</p>\n";
        drawHistogram(histogram(sorted, true), 530.0, 300.0, out);
        out << "</section>\n";
    }
    out << "</div>\n";
}

}  // namespace

void writeComparison(const Comparison& comparison, std::ostream& out) {
    out << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<title>Comparison of two logs</title>\n<style>"
        << REPORT_STYLE << "</style>\n</head>\n<body>\n<main>\n<h1>" << escapeHtml(conclusionOf(comparison))
        << "</h1>\n";
    for (std::size_t i = 0; i < comparison.logs.size(); ++i) {
        const LogSummary& summary = comparison.summaries[i];
        out << "<p class=\"lead\">" << LETTERS[i] << ": " << escapeHtml(comparison.logs[i]->folder)
            << " &middot; " << clockText(summary.seconds, summary.seconds) << " &middot; "
            << grouped(summary.frames) << " frames</p>\n";
    }
    writeFigures(comparison, out);
    const double top = scaleTop(comparison);
    writeOverTime(comparison, 0, top, out);
    writeOverTime(comparison, 1, top, out);
    writeDistributions(comparison, out);
    out << "<section class=\"card\"><h2>How to read this</h2>\n<ul>\n"
           "<li>A low rate is that of the slowest frames alone: their number by the time they took "
           "together.</li>\n"
           "<li>A change lies between the two bounds with a probability of 95 %. It is more than noise when "
           "both are on the same side of 0. The bounds come from drawing blocks of frames of each log at "
           "random, a thousand times; the drawing is the same every time.</li>\n"
           "<li>What differs between two starts of a program (other programs, heat, another scene) is no "
           "noise "
           "within a log: log several times before you trust a small change.</li>\n"
           "</ul></section>\n</main>\n</body>\n</html>\n";
}

}  // namespace dumps
