#pragma once

#include "scene/FigureWidget.h"

namespace scene {

/// Frame rate: the current one (with the graph), the median and the stability; the mean as a note.
extern const FigureTable FPS_WIDGET;

}  // namespace scene
