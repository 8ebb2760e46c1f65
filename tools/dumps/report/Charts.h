#pragma once

#include "dumps/Statistics.h"

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

/// Graphs of the report as SVG elements, drawn with the style sheet's classes. They scale to the width of
/// what holds them.
namespace dumps {

/// A horizontal line that a graph is read against.
struct ReferenceLine {
    double y;
    std::string label;
};

/// One value over time.
struct TimeChart {
    double width;  ///< in the units of its texts, as `height`
    double height;
    std::string_view label;        ///< for screen readers
    const std::vector<double>& x;  ///< seconds, rising
    const std::vector<double>& y;  ///< one for each x; gaps where it is not a number
    double bottom;                 ///< of the scale, with `top`; larger figures are marked at the top
    double top;
    std::string_view unit;
    std::vector<ReferenceLine> references;
    std::vector<double> meanX;  ///< a second, bold line, may be empty
    std::vector<double> meanY;
};
void drawTimeChart(const TimeChart& chart, std::ostream& out);

/// Bars of a histogram of frame times, each with its count.
void drawHistogram(const Histogram& histogram, double width, double height, std::ostream& out);

/// One piece of a bar.
struct BarPiece {
    double share;  ///< of the bar's whole width, 0..1
    std::string title;
};

/// A horizontal bar of pieces end to end.
void drawBar(const std::vector<BarPiece>& pieces, std::ostream& out);

/// The smallest of 1, 2, 2.5 or 5 times a power of ten that is at least `step` > 0.
double niceStep(double step);

}  // namespace dumps
