#pragma once

#include "simulator/Curve.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

/// A render pass of a frame, in milliseconds from the frame's start.
struct ScriptedPass {
    double startMs;
    double endMs;                       ///< not before the start; may be after the frame's end
    std::vector<std::uint32_t> values;  ///< 1 to 6
};

/// The render passes of one frame.
struct ScriptedFrame {
    double startMs;  ///< on the device's clock
    double durationMs;
    std::vector<ScriptedPass> passes;  ///< at least one, in the script's order
};

/// What a simulated device does over time; devices/README.md describes the format.
class Script {
public:
    /// The names of the curves that the GPU counters follow.
    struct Counters {
        std::string usage;           ///< percent
        std::string vertexActivity;  ///< fraction from 0 to 1
        std::string fragmentActivity;
    };

    /// Reads a script. Returns an empty text, or "PATH: POINTER: expected ..." with the JSON pointer of the
    /// wrong value, or "PATH:LINE: expected JSON: ..." when the text is not JSON.
    std::string read(const std::string& path, std::string_view text);

    /// Whether a curve or a total has this name.
    bool hasFigure(const std::string& name) const;

    /// Returns the figure at this time, in seconds from 0; 0 when none has this name.
    double figureAt(const std::string& name, double seconds) const;

    /// Nothing when the device has no GPU counters.
    std::optional<Counters> counters;

    /// The device works on them in turn and then starts over; empty when it has no render passes.
    std::vector<ScriptedFrame> frames;

    /// Returns the frame that the device works on at this time; nothing when it has none.
    std::optional<ScriptedFrame> frameAt(double seconds) const;

    /// A figure that grows with the area under a curve, such as a count of ticks.
    struct Total {
        std::string curve;
        double perSecond = 0.0;  ///< growth per second while the curve is at 1
        double start = 0.0;
    };

    std::map<std::string, Curve> curves;
    std::map<std::string, Total> totals;
};

}  // namespace simulator
