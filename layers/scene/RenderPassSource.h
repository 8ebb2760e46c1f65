#pragma once

#include "gui/FrameData.h"

namespace scene {

/// Where a layer's render passes come from: each API counts them in its own way. Rendering thread only.
class RenderPassSource {
public:
    virtual ~RenderPassSource() = default;

    /// Fills `frame` with the render passes of the frame whose number it carries, time stamps in
    /// milliseconds. False when they are not known; `frame` then does not matter.
    virtual bool readFrame(gui::FrameData& frame) = 0;
};

}  // namespace scene
