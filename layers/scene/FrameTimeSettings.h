#pragma once

#include "core/SysPropWatcher.h"
#include "gui/WidgetsSettings.h"

#include <string>

namespace scene {

/// Switches and colours of the frame times.
struct FrameTimeSettings {
    const SysProp<bool>& isOn;
    const SysProp<std::string>& screenRate;  ///< frames a second; empty: not known
    // The parts of a bar, from its top to its bottom.
    gui::WidgetsSettings::Graph swap;
    gui::WidgetsSettings::Graph gpu;
    gui::WidgetsSettings::Graph cpu;
};

/// Returns the process's settings; the first call creates their properties. Rendering thread.
const FrameTimeSettings& frameTimeSettings();

}  // namespace scene
