#pragma once

#include <utility>
#include <vector>

namespace fontgen {

/// Extent of an outline along one axis, in pixels; vertically 0 is the baseline and up is positive.
struct Span {
    double low = 0.0;
    double high = 0.0;

    double size() const { return high - low; }
};

/// A piecewise linear map of one axis, given by anchors in rising order; the first and the last piece go
/// on beyond their ends. Moves an outline's edges onto pixel boundaries without a hinting program.
class AxisMap {
public:
    struct Anchor {
        double from;
        double to;
    };

    /// At least two anchors, no two with the same `from`.
    explicit AxisMap(std::vector<Anchor> anchors) : mAnchors(std::move(anchors)) {}

    double operator()(double value) const;

private:
    std::vector<Anchor> mAnchors;
};

/// Vertical map for a character whose outline spans `natural`. The bottom comes to stand on the baseline or
/// a whole pixel, the top on the height of capitals, small letters or ascenders; round letters lose their
/// overshoot. `overshoot` is how far the face's round letters reach below the baseline (pixels, positive),
/// `stroke` how thick its horizontal strokes are.
AxisMap fitVertically(char code, const Span& natural, double overshoot, double stroke);

/// Horizontal map: keeps the width, so that stems stay equally thick, and puts the left edge on the pixel
/// boundary nearest to its natural place, never left of the pen. A character with a given box is centred in
/// it, squeezed or widened only as far as its ink would otherwise not fill the box.
AxisMap fitHorizontally(char code, const Span& natural);

}  // namespace fontgen
