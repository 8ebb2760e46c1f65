#include "OutlineFit.h"

#include "FontLayout.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace fontgen {
namespace {

// The heights above the baseline that suit the given boxes of "A", "g" and "j".
constexpr double SMALL_HEIGHT = 26.0;
constexpr double ASCENDER_HEIGHT = 36.0;
constexpr double DESCENDER_DEPTH = -9.0;
// The dot of "j" must reach into the row above 35 pixels, and the dot of "i" must match it.
constexpr double DOT_HEIGHT = 35.3;

bool isOneOf(std::string_view characters, char code) {
    return characters.find(code) != std::string_view::npos;
}

bool isCapitalOrDigit(char code) {
    return (code >= 'A' && code <= 'Z') || (code >= '0' && code <= '9') || code == '#' || code == '%';
}

double fittedTop(char code, double top) {
    if (isCapitalOrDigit(code)) {
        return CAPITAL_HEIGHT;
    }
    if (isOneOf("acegmnopqrsuvwxyz", code)) {
        return SMALL_HEIGHT;
    }
    if (isOneOf("bdfhkl", code)) {
        return ASCENDER_HEIGHT;
    }
    return isOneOf("ij", code) ? DOT_HEIGHT : std::round(top);
}

}  // namespace

double AxisMap::operator()(double value) const {
    std::size_t upper = 1;
    while (upper + 1 < mAnchors.size() && value > mAnchors[upper].from) {
        ++upper;
    }
    const Anchor& a = mAnchors[upper - 1];
    const Anchor& b = mAnchors[upper];
    return a.to + (value - a.from) * (b.to - a.to) / (b.from - a.from);
}

AxisMap fitVertically(char code, const Span& natural, double overshoot, double stroke) {
    // Dots keep their shape and only move down to the baseline; a comma stays where it is.
    if (isOneOf(".:", code)) {
        return AxisMap({{natural.low, 0.0}, {natural.high, natural.size()}});
    }
    if (code == ',') {
        return AxisMap({{natural.low, natural.low}, {natural.high, natural.high}});
    }
    const double top = fittedTop(code, natural.high);
    if (isOneOf("gjpqy", code)) {
        // Shortens the tail between its stroke and the baseline; the stroke keeps its thickness, and the bowl
        // sits on the baseline like those of the other letters.
        return AxisMap({{natural.low, DESCENDER_DEPTH},
                        {natural.low + stroke, DESCENDER_DEPTH + stroke},
                        {-overshoot, 0.0},
                        {natural.high, top}});
    }
    if (code == 'Q') {
        return AxisMap({{natural.low, std::round(natural.low)}, {-overshoot, 0.0}, {natural.high, top}});
    }
    return AxisMap({{natural.low, std::round(natural.low)}, {natural.high, top}});
}

AxisMap fitHorizontally(char code, const Span& natural) {
    const double width = natural.size();
    if (const GlyphBox* const box = fixedBox(code)) {
        // Centred ink touches both outer columns if it is wider than the box without them.
        const double boxWidth = box->width;
        const double fitted = std::clamp(width, boxWidth - 1.75, boxWidth);
        const double left = box->xOffset + (boxWidth - fitted) / 2.0;
        return AxisMap({{natural.low, left}, {natural.high, left + fitted}});
    }
    const double left = std::max(0.0, std::round(natural.low));
    return AxisMap({{natural.low, left}, {natural.high, left + width}});
}

}  // namespace fontgen
