#include "dumps/DumpReader.h"
#include "dumps/report/Charts.h"
#include "dumps/report/Html.h"
#include "dumps/report/ReportSections.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>
#include <string>

namespace dumps {

namespace {

constexpr std::size_t SLOWEST_IN_TABLE = 10;

/// How long the bold line averages: long enough to be right to a fraction of a millisecond.
constexpr double MEAN_WINDOW_SECONDS = 0.25;
constexpr double MAX_MEAN_POINTS = 500.0;

constexpr const char* MEASURED_TIMES =
    "<li>A frame time goes from the end of one swap to the end of the next, as the overlay measured it. "
    "SwapTime "
    "is the part in the program's swap call, OverlayTime the part in the overlay itself. GpuTime is how long "
    "the "
    "GPU worked on a frame; it becomes known some frames later and stands there.</li>\n";
constexpr const char* STAMPED_TIMES =
    "<li>A frame time is the difference of two time stamps in whole milliseconds, so that of a single frame, "
    "and "
    "each percentile of them, is right to within 1 ms: an even 60 fps shows as frames of 16 and 17 ms. Rates "
    "and "
    "means over many frames are as much finer.</li>\n";

std::string pluralFrames(std::uint64_t count) {
    return grouped(count) + (count == 1 ? " frame" : " frames");
}

/// "2025-11-24 16:00:00 UTC"; empty for a time that no calendar knows.
std::string dateText(std::int64_t timestampMs) {
    const auto seconds = static_cast<std::time_t>(timestampMs / 1000);
    std::tm calendar = {};
    std::array<char, 40> text{};
    if (gmtime_r(&seconds, &calendar) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S UTC", &calendar) == 0) {
        return {};
    }
    return text.data();
}

/// Of a frame time in milliseconds.
int decimalsOf(const ReportData& data) {
    return data.times.isMeasured ? 2 : 0;
}

void writeTile(const std::string& figure, const char* unit, const std::string& name, std::ostream& out) {
    out << "<div class=\"tile\"><b>" << figure << " <small>" << unit << "</small></b><span>" << name
        << "</span></div>\n";
}

void writeRateTile(std::optional<double> rate, const std::string& name, std::ostream& out) {
    writeTile(rate ? fixedPoint(*rate, 1) : "&ndash;", "fps", name, out);
}

void writeTimeTile(double milliseconds, const ReportData& data, const std::string& name, std::ostream& out) {
    writeTile(fixedPoint(milliseconds, decimalsOf(data)), "ms", name, out);
}

/// The top of a scale that shows all but a few very slow frames.
double scaleTop(const ReportData& data) {
    const double bulk = std::max(data.summary.medianMs * 3.0, data.summary.percentile99Ms * 1.25);
    const double top =
        std::max(std::min(data.summary.longestMs * 1.05, bulk), data.times.isMeasured ? 0.1 : 1.0);
    const double step = niceStep(top / 5.0);
    return std::ceil(top / step) * step;
}

double meanWindow(const ReportData& data) {
    return std::max(MEAN_WINDOW_SECONDS, data.elapsedSeconds.back() / MAX_MEAN_POINTS);
}

/// Adds the mean frame time over windows of equal length, if that makes a line.
void addMeans(const ReportData& data, TimeChart& chart) {
    const double window = meanWindow(data);
    double sum = 0.0;
    double count = 0.0;
    double first = data.elapsedSeconds[data.times.times.front().frame];
    for (const FrameTime& time : data.times.times) {
        const double now = data.elapsedSeconds[time.frame];
        sum += time.milliseconds;
        count += 1.0;
        if (now - first >= window) {
            chart.meanX.push_back((first + now) / 2.0);
            chart.meanY.push_back(sum / count);
            sum = 0.0;
            count = 0.0;
            first = now;
        }
    }
    if (chart.meanX.size() < 2) {
        chart.meanX.clear();
        chart.meanY.clear();
    }
}

void writeSlowestFrames(const ReportData& data, std::ostream& out) {
    const DumpedValue* const cpu = data.dump.findValue("CpuLoad");
    const DumpedValue* const gpu = data.dump.findValue("GpuLoad");
    out << "<section class=\"card\"><h2>Slowest frames</h2>\n"
           "<p class=\"note\">With the loads shown at that moment</p>\n"
           "<table><tr><th>Frame</th><th>at</th><th>Frame time</th><th>CPU</th><th>GPU</th></tr>\n";
    const auto load = [](const DumpedValue* value, std::size_t frame) {
        return value != nullptr && std::isfinite(value->figures[frame])
                   ? fixedPoint(value->figures[frame], 0) + " %"
                   : std::string("N/A");
    };
    for (const std::size_t index : slowest(data.times, SLOWEST_IN_TABLE)) {
        const FrameTime& time = data.times.times[index];
        out << "<tr><td>" << data.dump.frames[time.frame].number << "</td><td>"
            << clockText(data.elapsedSeconds[time.frame], data.elapsedSeconds.back()) << "</td><td>"
            << fixedPoint(time.milliseconds, decimalsOf(data)) << " ms</td><td>" << load(cpu, time.frame)
            << "</td><td>" << load(gpu, time.frame) << "</td></tr>\n";
    }
    out << "</table></section>\n";
}

}  // namespace

std::string titleOf(const Dump& dump) {
    std::string title;
    for (const char* const name : {"Program", "GPU", "Size"}) {
        const auto subject = dump.subjects.find(name);
        if (subject != dump.subjects.end() && !subject->second.empty()) {
            title += (title.empty() ? "" : ", ") + subject->second;
        }
    }
    const std::string date = dateText(dump.frames.front().timestampMs);
    return (title.empty() ? "Frame dump report" : title) + (date.empty() ? "" : ", " + date);
}

void writeHeading(const ReportData& data, std::ostream& out) {
    const Dump& dump = data.dump;
    out << "<h1>" << escapeHtml(titleOf(dump)) << "</h1>\n<p class=\"lead\">" << escapeHtml(dump.folder)
        << " &middot; " << clockText(data.elapsedSeconds.back(), data.elapsedSeconds.back()) << " &middot; "
        << pluralFrames(dump.frames.size()) << ", " << dump.frames.front().number << " to "
        << dump.frames.back().number << "</p>\n";
    std::string warnings = describeLosses(dump);
    const auto warn = [&](const std::string& sentence) {
        warnings += (warnings.empty() ? "" : " ") + sentence;
    };
    if (data.times.missingFrames > 0) {
        warn(pluralFrames(data.times.missingFrames) + " missing in between.");
    }
    if (data.times.clockSteps > 0) {
        warn("The clock was set back during " + pluralFrames(data.times.clockSteps) +
             ", which have no frame time.");
    }
    if (!warnings.empty()) {
        out << "<p class=\"warning\">" << escapeHtml(warnings) << "</p>\n";
    }
}

void writeTiles(const ReportData& data, std::ostream& out) {
    const FrameRateSummary& summary = data.summary;
    out << "<div class=\"tiles\">\n";
    writeRateTile(summary.meanRate, "mean frame rate", out);
    writeRateTile(summary.low1Rate, "1 % low", out);
    writeRateTile(summary.low01Rate, "0.1 % low", out);
    writeTile(fixedPoint(summary.stability, 1), "%", "stability", out);
    writeTimeTile(summary.medianMs, data, "median frame time", out);
    writeTimeTile(summary.percentile95Ms, data, "95th percentile", out);
    writeTimeTile(summary.percentile99Ms, data, "99th percentile", out);
    writeTimeTile(summary.longestMs, data, "longest frame", out);
    out << "</div>\n";
}

void writeFrameTimes(const ReportData& data, std::ostream& out) {
    const double top = scaleTop(data);
    std::vector<double> milliseconds(data.dump.frames.size(), std::nan(""));
    for (const FrameTime& time : data.times.times) {
        milliseconds[time.frame] = time.milliseconds;
    }
    TimeChart chart = {1100.0,
                       260.0,
                       "Frame time over time",
                       data.elapsedSeconds,
                       milliseconds,
                       0.0,
                       top,
                       "ms",
                       {{1000.0 / 30.0, "30 fps"}, {1000.0 / 60.0, "60 fps"}, {1000.0 / 120.0, "120 fps"}},
                       {},
                       {}};
    addMeans(data, chart);
    const bool hasMeans = !chart.meanX.empty();
    out << "<section class=\"card wide\"><h2>Frame time</h2>\n<p class=\"note\">Each frame"
        << (hasMeans ? ", and in bold the mean of " + fixedPoint(meanWindow(data), 2) + " s." : ".")
        << (data.summary.longestMs > top ? " Triangles mark frames beyond the scale." : "") << "</p>\n";
    drawTimeChart(chart, out);
    out << "</section>\n";
}

void writeDistribution(const ReportData& data, std::ostream& out) {
    out << "<div class=\"pair\">\n<section class=\"card\"><h2>Distribution</h2>\n"
           "<p class=\"note\">Frames by their frame time in ms</p>\n";
    drawHistogram(histogram(data.sortedMs, data.times.isMeasured), 530.0, 380.0, out);
    out << "</section>\n";
    writeSlowestFrames(data, out);
    out << "</div>\n";
}

void writeExplanations(const ReportData& data, std::ostream& out) {
    out << "<section class=\"card\"><h2>How to read this</h2>\n<ul>\n";
    out << (data.times.isMeasured ? MEASURED_TIMES : STAMPED_TIMES);
    out << "<li>1 % low is the frame rate over the slowest hundredth of all frames (their number divided by "
           "the "
           "time they took together), 0.1 % low that over the slowest thousandth, each over at least one "
           "frame. "
           "Of the "
        << pluralFrames(data.times.times.size()) << " with a frame time these are "
        << grouped(std::max<std::size_t>(data.times.times.size() / 100, 1)) << " and "
        << grouped(std::max<std::size_t>(data.times.times.size() / 1000, 1))
        << ".</li>\n<li>Stability is the share of "
        << (data.summary.isStabilityOfRates
                ? "frames at which the overlay's frame rate, measured over about 120 ms, lay within 20 % of "
                  "its median."
                : "frame times within 20 % of their median.")
        << "</li>\n<li>A value that was 0 in every frame was not measured and is left out.</li>\n"
           "<li>Render passes belong to single frames that were captured, not to every frame of the "
           "dump. On a PC the first value of a pass is its time on the GPU in microseconds, the second one "
           "the "
           "number that OpenGL knows its framebuffer by (0: the window); on a device they are what its "
           "driver "
           "counted.</li>\n"
           "</ul></section>\n";
}

}  // namespace dumps
