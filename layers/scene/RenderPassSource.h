#pragma once

#include "gui/FrameData.h"
#include "scene/Reading.h"

namespace scene {

/// Where a layer's render passes come from: each API counts them in its own way. Rendering thread only.
class RenderPassSource {
public:
    virtual ~RenderPassSource() = default;

    /// Fills `frame`, which carries a number already, with the passes of the frame that was captured, time
    /// stamps in milliseconds. `captureStart` is the time of the capture's first counter sample in seconds
    /// of the counters' clock; empty when there are no counters, which leaves the last frame that the GPU
    /// has finished. False when the passes are not known; `frame` then does not matter.
    virtual bool readFrame(gui::FrameData& frame, Reading captureStart) = 0;
};

}  // namespace scene
