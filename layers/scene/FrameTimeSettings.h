#pragma once

#include "core/SysPropWatcher.h"
#include "gui/WidgetsSettings.h"

namespace scene {

/// Switches and colours of the frame times.
struct FrameTimeSettings {
    const SysProp<bool>& isOn;
    // The parts of a bar, from its top to its bottom.
    gui::WidgetsSettings::Graph swap;
    gui::WidgetsSettings::Graph gpu;
    gui::WidgetsSettings::Graph cpu;
};

/// Returns the process's settings; the first call creates their properties. Rendering thread.
const FrameTimeSettings& frameTimeSettings();

}  // namespace scene
