#pragma once

#include "figures/Catalogue.h"
#include "scene/FrameTimes.h"

#include <cstdint>
#include <glm/vec2.hpp>
#include <vector>

namespace figures {
class Metrics;
}

namespace scene {

/// The columns of frame dumps that the library does not have, for a companion library that takes them: the
/// times of each frame in microseconds, and figures of the catalogue. What was not measured is empty.
/// Rendering thread only.
class ExtraDump {
public:
    ExtraDump();

    /// The surface that dumps are of.
    void tellSurface(const glm::uvec2& size);

    /// After a refresh: the values of the frames from now on.
    void tell(const figures::Metrics& metrics);

    /// While a dump runs, before a frame is recorded. The GPU's time is the one that has become known during
    /// the frame, of one some frames before; FrameTime::NOT_MEASURED when there is none.
    void tellFrame(const FrameTime& frame, std::int64_t gpuNanoseconds);

private:
    std::vector<const figures::Figure*> mFigures;
    std::vector<double> mValues;  ///< the frame's, then those of mFigures
};

}  // namespace scene
