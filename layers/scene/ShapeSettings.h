#pragma once

#include "core/SysPropWatcher.h"

namespace scene {

/// How much of the figures' widgets is shown, and how wide they are.
struct ShapeSettings {
    const SysProp<bool>& hasGraphs;        ///< off: a widget is its line of figures, without graphs and notes
    const SysProp<bool>& isWidthFitted;    ///< on: as wide as its figures' texts
    const SysProp<bool>& hidesUnreadable;  ///< on: what cannot be read has no room even if it was set by hand
};

/// Returns the process's settings; the first call creates their properties. Rendering thread.
const ShapeSettings& shapeSettings();

}  // namespace scene
