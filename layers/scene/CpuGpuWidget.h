#pragma once

#include "scene/FigureWidget.h"

namespace scene {

/// Load of the processors, clock and load of the GPU; as notes the GPU's vendor, the temperatures, the GPU's
/// highest clock and whether the clocks are fixed.
extern const FigureTable CPU_GPU_WIDGET;

}  // namespace scene
