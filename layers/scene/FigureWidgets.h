#pragma once

#include "core/SysPropWatcher.h"
#include "drawers/TextDrawer.h"
#include "gui/LayoutDef.h"
#include "gui/WidgetsSettings.h"

#include <cstddef>
#include <optional>
#include <string>

namespace figures {
class Metrics;
}

namespace scene {

/// A figure's place in the strip. Without a cell for the name, the name comes before the value.
struct FigureCell {
    std::optional<gui::RenderAreaType> name;
    gui::RenderAreaType value;
};

/// A text over the graphs or in the strip.
struct NoteRow {
    gui::RenderAreaType area;
    gui::TextGravity gravity;

    /// Whether the text has a backdrop of its own width, as texts over graphs need.
    bool hasBackdrop;

    std::string (*text)(const figures::Metrics&);
};

/// A widget with a strip of figures and their graphs below. Which figures: see the catalogue.
struct FigureWidgetLayout {
    gui::WidgetType type;
    const SysProp<bool>& (*widgetSwitch)();
    gui::RenderAreaType stripArea;
    gui::RenderAreaType graphArea;

    /// The cells of the catalogue's first figures. If a shown figure has no cell here, all share the strip.
    const FigureCell* cells;
    std::size_t cellCount;
    float labelWidth;  ///< of the strip's left end, where no figure may stand, in canvas units

    const NoteRow* notes;
    std::size_t noteCount;
};

/// Frame rate: the current one (with the graph), the median and the stability; the mean as a note.
extern const FigureWidgetLayout FPS_WIDGET;

/// Load of the processors, clock and load of the GPU; as notes the GPU's vendor, the temperatures, the GPU's
/// highest clock and whether the clocks are fixed.
extern const FigureWidgetLayout CPU_GPU_WIDGET;

/// Memory of the process and its GPU memory, all on one scale that holds the largest of them so far, and the
/// free memory of the system on the scale of its total; the system's memory in use as a note.
extern const FigureWidgetLayout MEMORY_WIDGET;

}  // namespace scene
