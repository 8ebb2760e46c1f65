#include "dumps/report/Charts.h"
#include "dumps/report/Html.h"
#include "dumps/report/ReportSections.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>

namespace dumps {

namespace {

constexpr double BYTES_PER_MIB = 1024.0 * 1024.0;
constexpr std::size_t FRAMES_WITH_PASSES = 6;

/// Titles for people; a value that is not here goes by its own name.
struct Title {
    std::string_view name;
    std::string_view title;
};
constexpr Title TITLES[] = {
    {"Fps", "Frame rate as the overlay showed it"},
    {"FpsMedian", "Median frame rate"},
    {"FpsStability", "Frame-rate stability"},
    {"CpuLoad", "CPU load"},
    {"GpuLoad", "GPU load"},
    {"GpuFreq", "GPU clock"},
    {"MemPss", "Memory of the process (PSS)"},
    {"MemGpu", "GPU memory"},
    {"MemSurf", "GPU memory of surfaces"},
    {"MemTex", "GPU memory of textures"},
    {"MemSysFreeHeap", "Free memory of the system"},
};

std::string_view titleOf(const DumpedValue& value) {
    const auto* const found = std::find_if(std::begin(TITLES), std::end(TITLES),
                                           [&](const Title& row) { return row.name == value.name; });
    return found == std::end(TITLES) ? std::string_view(value.name) : found->title;
}

/// The bounds of a value's scale.
struct Bounds {
    double bottom;
    double top;
};

Bounds boundsOf(const Range& range, const std::string& unit) {
    if (unit == "%" && range.lowest >= 0.0 && range.highest <= 100.0) {
        return {0.0, 100.0};
    }
    // Near 0 the scale begins there; else it shows how the value moves, but does not blow up mere noise.
    double bottom = range.lowest > range.highest * 0.5 ? range.lowest : std::min(range.lowest, 0.0);
    double span = range.highest - bottom;
    const double smallestSpan = std::max(std::abs(range.highest) * 0.05, 1e-3);
    if (span < smallestSpan) {
        bottom -= (smallestSpan - span) / 2.0;
        span = smallestSpan;
    }
    const double step = niceStep(span / 4.0);
    const double first = std::floor(bottom / step) * step;
    return {first, first + std::ceil((bottom + span - first) / step) * step};
}

void writeValue(const ReportData& data, const DumpedValue& value, std::ostream& out) {
    const bool isBytes = value.unit == "Bytes";
    const std::string unit = isBytes ? "MiB" : value.name == "Fps" && value.unit.empty() ? "fps" : value.unit;
    std::vector<double> figures = value.figures;
    if (isBytes) {
        std::transform(figures.begin(), figures.end(), figures.begin(),
                       [](double bytes) { return bytes / BYTES_PER_MIB; });
    }
    const auto range = rangeOf(figures);
    if (!range) {
        return;
    }
    const Bounds bounds = boundsOf(*range, unit);
    const int decimals = unit == "MHz" ? 0 : 1;
    const std::string title(titleOf(value));
    out << "<div><h3>" << escapeHtml(title) << "</h3>\n<p>" << fixedPoint(range->lowest, decimals) << " to "
        << fixedPoint(range->highest, decimals) << ", mean " << fixedPoint(range->mean, decimals) << ' '
        << escapeHtml(unit) << "</p>\n";
    drawTimeChart(
        {530.0, 160.0, title, data.elapsedSeconds, figures, bounds.bottom, bounds.top, unit, {}, {}, {}},
        out);
    out << "</div>\n";
}

void writePassTable(const Dump& dump, const PassGroup& group, std::ostream& out) {
    out << "<details><summary>All " << group.count
        << " passes</summary>\n<table><tr><th>Pass</th><th>First value</th><th>Second value</th>"
           "<th>Duration</th></tr>\n";
    for (std::size_t i = 0; i < group.count; ++i) {
        const DumpedPass& pass = dump.passes[group.first + i];
        out << "<tr><td>" << i << "</td><td>" << grouped(pass.firstValue) << "</td><td>"
            << grouped(pass.secondValue) << "</td><td>" << fixedPoint(pass.durationMs, 2)
            << " ms</td></tr>\n";
    }
    out << "</table></details>\n";
}

void writePassGroup(const Dump& dump, const PassGroup& group, double longestMs, std::ostream& out) {
    const DumpedFrame& frame = dump.frames[dump.passes[group.first].frame];
    std::size_t longest = 0;
    std::vector<BarPiece> pieces;
    for (std::size_t i = 0; i < group.count; ++i) {
        const DumpedPass& pass = dump.passes[group.first + i];
        pieces.push_back({longestMs > 0.0 ? pass.durationMs / longestMs : 0.0,
                          "Pass " + std::to_string(i) + ": " + fixedPoint(pass.durationMs, 2) +
                              " ms, values " + grouped(pass.firstValue) + " and " +
                              grouped(pass.secondValue)});
        if (pass.durationMs > dump.passes[group.first + longest].durationMs) {
            longest = i;
        }
    }
    out << "<div class=\"frame\"><h3>Frame " << frame.passFrameId << ": " << fixedPoint(group.lengthMs, 2)
        << " ms</h3>\n<p>" << group.count << (group.count == 1 ? " pass" : " passes") << " of "
        << fixedPoint(group.sumMs, 2) << " ms together; the longest is pass " << longest << " with "
        << fixedPoint(dump.passes[group.first + longest].durationMs, 2) << " ms. Recorded with frame "
        << frame.number << ".</p>\n";
    drawBar(pieces, out);
    writePassTable(dump, group, out);
    out << "</div>\n";
}

}  // namespace

void writeValues(const ReportData& data, std::ostream& out) {
    const auto& values = data.dump.values;
    if (std::none_of(values.begin(), values.end(),
                     [](const DumpedValue& value) { return value.hasFigures(); })) {
        return;
    }
    out << "<section class=\"card\"><h2>Other values</h2>\n<div class=\"values\">\n";
    for (const DumpedValue& value : values) {
        writeValue(data, value, out);
    }
    out << "</div></section>\n";
}

void writePassesOfSlowestFrames(const ReportData& data, std::ostream& out) {
    std::vector<PassGroup> groups = groupPasses(data.dump);
    if (groups.empty()) {
        return;
    }
    std::stable_sort(groups.begin(), groups.end(), [](const PassGroup& left, const PassGroup& right) {
        return left.lengthMs > right.lengthMs;
    });
    const std::size_t captured = groups.size();
    groups.resize(std::min(captured, FRAMES_WITH_PASSES));
    out << "<section class=\"card\"><h2>Render passes of the slowest captured frames</h2>\n<p "
           "class=\"note\">";
    if (groups.size() < captured) {
        out << "The slowest " << groups.size() << " of " << grouped(captured) << " captured frames";
    } else {
        out << (captured == 1 ? "The one captured frame" : "All captured frames");
    }
    out << ", by duration on the GPU. The bars have one scale; their pieces are the passes in order, the "
           "rest of "
           "a frame is time outside of passes.</p>\n";
    const double longestMs = groups.front().lengthMs;
    for (const PassGroup& group : groups) {
        writePassGroup(data.dump, group, longestMs, out);
    }
    out << "</section>\n";
}

}  // namespace dumps
