#include "dumps/report/Charts.h"

#include "dumps/report/Html.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace dumps {

namespace {

constexpr double MARGIN_LEFT = 46.0;
constexpr double MARGIN_RIGHT = 12.0;
constexpr double MARGIN_REFERENCES = 54.0;
constexpr double MARGIN_TOP = 24.0;
constexpr double MARGIN_BOTTOM = 24.0;

constexpr double MAX_BAR_WIDTH = 56.0;

/// The part of an SVG that the axes enclose.
struct PlotArea {
    PlotArea(double width, double height, double marginRight = MARGIN_RIGHT)
        : left(MARGIN_LEFT), right(width - marginRight), top(MARGIN_TOP), bottom(height - MARGIN_BOTTOM) {}

    double left;
    double right;
    double top;
    double bottom;
};

/// Maps values to the coordinates of an SVG.
struct Scale {
    double firstValue;
    double lastValue;
    double firstPixel;
    double lastPixel;

    double operator()(double value) const {
        return firstPixel + (value - firstValue) / (lastValue - firstValue) * (lastPixel - firstPixel);
    }
};

std::string pixel(double position) {
    return fixedPoint(position, 1);
}

void beginSvg(double width, double height, std::string_view label, std::ostream& out) {
    out << "<svg viewBox=\"0 0 " << pixel(width) << ' ' << pixel(height) << "\" role=\"img\" aria-label=\""
        << escapeHtml(label) << "\">\n";
}

void drawLine(const char* style, double x1, double y1, double x2, double y2, std::ostream& out) {
    out << "<line class=\"" << style << "\" x1=\"" << pixel(x1) << "\" y1=\"" << pixel(y1) << "\" x2=\""
        << pixel(x2) << "\" y2=\"" << pixel(y2) << "\"/>\n";
}

/// `anchor`: "start", "middle" or "end".
void drawText(const char* style, const char* anchor, double x, double y, std::string_view text,
              std::ostream& out) {
    out << "<text class=\"" << style << "\" text-anchor=\"" << anchor << "\" x=\"" << pixel(x) << "\" y=\""
        << pixel(y) << "\">" << escapeHtml(text) << "</text>\n";
}

/// As many decimals as tell the ticks of a scale apart.
int decimalsOf(double step) {
    int decimals = 0;
    while (decimals < 3 && std::abs(step - std::round(step)) > 1e-9) {
        step *= 10.0;
        ++decimals;
    }
    return decimals;
}

void drawValueAxis(const PlotArea& area, const Scale& scale, std::string_view unit, std::ostream& out) {
    const double step = niceStep((scale.lastValue - scale.firstValue) / 5.0);
    // Counted, because adding a step to a large figure may not change it.
    const double first = std::ceil(scale.firstValue / step - 1e-9);
    for (int i = 0; i <= 6 && (first + i) * step <= scale.lastValue + step * 1e-6; ++i) {
        const double tick = (first + i) * step;
        const double y = scale(tick);
        drawLine("grid", area.left, y, area.right, y, out);
        drawText("tick", "end", area.left - 6.0, y + 4.0, fixedPoint(tick, decimalsOf(step)), out);
    }
    drawText("unit", "end", area.left - 6.0, area.top - 12.0, unit, out);
}

/// The distance of ticks on a time axis, at least `seconds`: minutes and hours divide into halves and
/// quarters, not into tens.
double niceTimeStep(double seconds) {
    constexpr double HOUR = 3600.0;
    for (const double step : {10.0, 15.0, 30.0, 60.0, 120.0, 300.0, 600.0, 900.0, 1800.0, HOUR}) {
        if (seconds <= step) {
            return seconds > 5.0 ? step : niceStep(seconds);
        }
    }
    return std::ceil(seconds / HOUR) * HOUR;
}

void drawTimeAxis(const PlotArea& area, const Scale& scale, std::ostream& out) {
    const double wanted = (area.right - area.left) / 90.0;
    const double step = niceTimeStep((scale.lastValue - scale.firstValue) / wanted);
    for (int i = 0; i * step <= scale.lastValue && i < 100; ++i) {
        const double x = scale(i * step);
        drawLine("grid", x, area.bottom, x, area.bottom + 4.0, out);
        const std::string label = step < 60.0 && scale.lastValue < 120.0
                                      ? fixedPoint(i * step, decimalsOf(step)) + " s"
                                      : clockText(i * step, scale.lastValue);
        drawText("tick", "middle", x, area.bottom + 17.0, label, out);
    }
}

/// The figures that fall on one column of pixels.
struct Column {
    double x = 0.0;
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -std::numeric_limits<double>::infinity();

    bool isEmpty() const { return lowest > highest; }
};

/// Reduces a series to columns, so that a long dump does not make a large page. A column without figures is
/// a gap.
std::vector<Column> toColumns(const TimeChart& chart, const Scale& xScale) {
    std::vector<Column> columns;
    for (std::size_t i = 0; i < chart.x.size(); ++i) {
        const double x = std::round(xScale(chart.x[i]) * 2.0) / 2.0;
        const double y = chart.y[i];
        if (columns.empty() || x != columns.back().x) {
            columns.emplace_back();
            columns.back().x = x;
        }
        if (std::isfinite(y)) {
            columns.back().lowest = std::min(columns.back().lowest, y);
            columns.back().highest = std::max(columns.back().highest, y);
        }
    }
    return columns;
}

/// A line through the columns that fills each one from its lowest to its highest figure.
void drawColumns(const std::vector<Column>& columns, const char* style, const Scale& yScale, double top,
                 std::ostream& out) {
    out << "<path class=\"" << style << "\" d=\"";
    bool isPenDown = false;
    bool isAtTop = false;
    const auto moveTo = [&](double x, double y) {
        out << (isPenDown ? 'L' : 'M') << pixel(x) << ' ' << pixel(yScale(std::min(y, top)));
        isPenDown = true;
    };
    for (const Column& column : columns) {
        if (column.isEmpty()) {
            isPenDown = false;
            continue;
        }
        // From the end where the pen is, so that the line does not cross the column twice.
        moveTo(column.x, isAtTop ? column.highest : column.lowest);
        if (column.highest > column.lowest) {
            moveTo(column.x, isAtTop ? column.lowest : column.highest);
            isAtTop = !isAtTop;
        }
    }
    out << "\"/>\n";
}

void drawMarks(const std::vector<Column>& columns, const PlotArea& area, const TimeChart& chart,
               std::ostream& out) {
    for (const Column& column : columns) {
        if (column.highest > chart.top) {
            out << "<path class=\"mark\" d=\"M" << pixel(column.x - 4.0) << ' ' << pixel(area.top + 2.0)
                << "h8l-4 -7z\"><title>" << fixedPoint(column.highest, 0) << ' ' << escapeHtml(chart.unit)
                << "</title></path>\n";
        }
    }
}

}  // namespace

double niceStep(double step) {
    const double power = std::pow(10.0, std::floor(std::log10(step)));
    for (const double factor : {1.0, 2.0, 2.5, 5.0}) {
        if (factor * power >= step * (1.0 - 1e-9)) {
            return factor * power;
        }
    }
    return 10.0 * power;
}

void drawTimeChart(const TimeChart& chart, std::ostream& out) {
    const PlotArea area(chart.width, chart.height,
                        chart.references.empty() ? MARGIN_RIGHT : MARGIN_REFERENCES);
    const double lastX = chart.x.empty() ? 0.0 : chart.x.back();
    const Scale xScale = {0.0, lastX > 0.0 ? lastX : 1.0, area.left, area.right};
    const Scale yScale = {chart.bottom, chart.top, area.bottom, area.top};
    beginSvg(chart.width, chart.height, chart.label, out);
    drawValueAxis(area, yScale, chart.unit, out);
    drawTimeAxis(area, xScale, out);
    for (const ReferenceLine& line : chart.references) {
        if (line.y > chart.bottom && line.y < chart.top) {
            drawLine("reference", area.left, yScale(line.y), area.right, yScale(line.y), out);
            drawText("tick", "start", area.right + 8.0, yScale(line.y) + 4.0, line.label, out);
        }
    }
    const std::vector<Column> columns = toColumns(chart, xScale);
    drawColumns(columns, chart.meanX.empty() ? "line" : "line faint", yScale, chart.top, out);
    if (!chart.meanX.empty()) {
        std::vector<Column> mean;
        for (std::size_t i = 0; i < chart.meanX.size(); ++i) {
            mean.push_back({xScale(chart.meanX[i]), chart.meanY[i], chart.meanY[i]});
        }
        drawColumns(mean, "line mean", yScale, chart.top, out);
    }
    drawMarks(columns, area, chart, out);
    out << "</svg>\n";
}

void drawHistogram(const Histogram& histogram, double width, double height, std::ostream& out) {
    const PlotArea area(width, height);
    std::vector<std::size_t> bars = histogram.counts;
    if (histogram.beyond > 0) {
        bars.push_back(histogram.beyond);
    }
    const auto highest = static_cast<double>(*std::max_element(bars.begin(), bars.end()));
    const Scale yScale = {0.0, std::max(highest, 1.0) * 1.08, area.bottom, area.top};
    const double pitch = std::min((area.right - area.left) / static_cast<double>(bars.size()), MAX_BAR_WIDTH);
    const double gap = std::min(2.0, pitch * 0.2);
    beginSvg(width, height, "Histogram of frame times", out);
    drawValueAxis(area, yScale, "frames", out);
    const bool hasRoomForCounts = pitch > 24.0;
    const int decimals = histogram.unitMs > 0.5 ? 0 : histogram.unitMs > 0.05 ? 1 : 2;
    const auto labelEvery = static_cast<std::size_t>(std::ceil(34.0 / pitch));
    for (std::size_t i = 0; i < bars.size(); ++i) {
        const bool isBeyond = i == histogram.counts.size();
        const double x = area.left + pitch * static_cast<double>(i);
        const double firstMs = histogram.firstMs + histogram.widthMs * static_cast<double>(i);
        const double lastMs = firstMs + histogram.widthMs - histogram.unitMs;
        std::string label = fixedPoint(firstMs, decimals);
        if (isBeyond) {
            label.insert(0, "\xE2\x89\xA5");
        } else if (lastMs > firstMs + 0.5 * histogram.unitMs) {
            label += "\xE2\x80\x93" + fixedPoint(lastMs, decimals);
        }
        // What is there must be seen, be it one frame among thousands.
        const double y =
            std::min(yScale(static_cast<double>(bars[i])), area.bottom - (bars[i] > 0 ? 1.5 : 0.0));
        out << "<rect class=\"" << (isBeyond ? "bar beyond" : "bar") << "\" x=\"" << pixel(x + gap / 2.0)
            << "\" y=\"" << pixel(y) << "\" width=\"" << pixel(pitch - gap) << "\" height=\""
            << pixel(area.bottom - y) << "\"><title>" << label << " ms: " << bars[i]
            << " frames</title></rect>\n";
        if (hasRoomForCounts && bars[i] > 0) {
            drawText("tick", "middle", x + pitch / 2.0, y - 4.0, std::to_string(bars[i]), out);
        }
        // The last label needs the room of two.
        const bool isNearBeyond = histogram.beyond > 0 && pitch * static_cast<double>(bars.size() - i) < 80.0;
        if (isBeyond) {
            drawText("tick", "end", x + pitch, area.bottom + 17.0, label + " ms", out);
        } else if (i % labelEvery == 0 && !isNearBeyond) {
            drawText("tick", "middle", x + pitch / 2.0, area.bottom + 17.0, fixedPoint(firstMs, decimals),
                     out);
        }
    }
    drawLine("axis", area.left, area.bottom, area.right, area.bottom, out);
    out << "</svg>\n";
}

void drawBar(const std::vector<BarPiece>& pieces, std::ostream& out) {
    constexpr double WIDTH = 1000.0;
    constexpr double HEIGHT = 22.0;
    out << "<svg class=\"passes\" viewBox=\"0 0 " << pixel(WIDTH) << ' ' << pixel(HEIGHT)
        << "\" preserveAspectRatio=\"none\" role=\"img\" aria-label=\"Render passes\">\n";
    double x = 0.0;
    bool isOdd = false;
    for (const BarPiece& piece : pieces) {
        const double width = piece.share * WIDTH;
        out << "<rect class=\"" << (isOdd ? "pass odd" : "pass") << "\" x=\"" << fixedPoint(x, 2)
            << "\" y=\"0\" width=\"" << fixedPoint(width, 2) << "\" height=\"" << pixel(HEIGHT)
            << "\"><title>" << escapeHtml(piece.title) << "</title></rect>\n";
        x += width;
        isOdd = !isOdd;
    }
    out << "</svg>\n";
}

}  // namespace dumps
