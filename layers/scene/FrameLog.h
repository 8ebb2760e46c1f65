#pragma once

#include "figures/Catalogue.h"
#include "scene/FrameTimes.h"

#include <cstdint>
#include <vector>

namespace figures {
class Metrics;
}

namespace scene {

/// Tells a companion library that keeps frame times of every frame, and of the figures that are in frame
/// dumps. Rendering thread only.
class FrameLog {
public:
    FrameLog();

    /// After a refresh: the values from now on.
    void tell(const figures::Metrics& metrics);

    /// The figures are not measured from now on.
    void tellNothing();

    /// The last frame, which ended at swappedAt().
    void tellFrame(FrameTimes& times);

    /// A frame whose GPU time has become known.
    void tellGpu(const FrameTime& frame);

    /// Whether a log is being written, which wants the GPU's times.
    bool isWritten() const;

private:
    std::vector<const figures::Figure*> mFigures;
    std::vector<double> mValues;
};

}  // namespace scene
