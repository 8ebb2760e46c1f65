#pragma once

#include "scene/RenderPassSource.h"

namespace demo {

/// The render passes of the simulated device; none without one.
class DevicePasses : public scene::RenderPassSource {
public:
    bool readFrame(gui::FrameData& frame, scene::Reading captureStart) override;
};

}  // namespace demo
