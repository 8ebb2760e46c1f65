#pragma once

#include "scene/FigureWidget.h"

namespace scene {

/// Memory of the process and its GPU memory, all on one scale that holds the largest of them so far, and the
/// free memory of the system on the scale of its total; the system's memory in use as a note.
extern const FigureTable MEMORY_WIDGET;

}  // namespace scene
