#pragma once

#include "ostra/FigureReport.h"

#include <cstddef>
#include <string>
#include <vector>

namespace control {

/// The last frames of a report for a graph, in milliseconds.
class FrameSummary {
public:
    /// A frame's time, as the overlay divides it: the GPU's work during the swap is the GPU's.
    struct Parts {
        double program = 0.0;
        double gpu = 0.0;
        double swap = 0.0;
    };

    /// Of at most `count` frames.
    FrameSummary(const platform::FigureReport& report, std::size_t count);

    /// The oldest first.
    const std::vector<Parts>& frames() const { return mFrames; }

    /// Where the graph's scale ends: above nearly all frames, and never 0.
    double top() const { return mTop; }

    /// "16.7ms  median 16.6  99% 17.9  longest 22.1"; empty without a frame.
    const std::string& text() const { return mText; }

private:
    std::vector<Parts> mFrames;
    double mTop = 1.0;
    std::string mText;
};

}  // namespace control
