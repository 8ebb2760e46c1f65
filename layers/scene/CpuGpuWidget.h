#pragma once

#include "scene/FigureWidget.h"

namespace scene {

/// Load of the processors, clock and load of the GPU; whether the clocks are fixed, and the temperatures,
/// as notes.
extern const FigureWidgetSpec CPU_GPU_WIDGET;

}  // namespace scene
