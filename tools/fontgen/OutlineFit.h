#pragma once

#include <utility>
#include <vector>

namespace fontgen {

/// The extent of an outline along one axis, in pixels; vertically 0 is the baseline and up is positive.
struct Span {
    double low = 0.0;
    double high = 0.0;

    double size() const { return high - low; }
};

/// A piecewise linear map of one axis, given by anchors in rising order; the first and the last piece
/// continue beyond their ends. Moves an outline's edges onto pixel boundaries without a hinting program.
class AxisMap {
public:
    struct Anchor {
        double from;
        double to;
    };

    /// Takes at least two anchors, no two with the same `from`.
    explicit AxisMap(std::vector<Anchor> anchors) : mAnchors(std::move(anchors)) {}

    double operator()(double value) const;

private:
    std::vector<Anchor> mAnchors;
};

/// The vertical map for a character whose outline spans `natural`. Moves the bottom to the baseline or to a
/// whole pixel, the top to the height of capitals, small letters or ascenders; round letters lose their
/// overshoot. `overshoot` is how far the face's round letters reach below the baseline (pixels, positive),
/// `stroke` how thick its horizontal strokes are.
AxisMap fitVertically(char code, const Span& natural, double overshoot, double stroke);

/// The horizontal map. Keeps the width, so that stems stay equally thick, and moves the left edge to the
/// nearest pixel boundary, never left of the pen. Centres a character with a given box in it, and stretches
/// or squeezes it only as far as needed to fill the box.
AxisMap fitHorizontally(char code, const Span& natural);

}  // namespace fontgen
