#pragma once

#include "drawers/Drawer.h"
#include "figures/Reading.h"
#include "gui/LayoutDef.h"

#include <bitset>
#include <cstddef>
#include <cstdint>

namespace figures {

/// The readers of Metrics.
enum class Source {
    CURRENT_FPS,
    MEDIAN_FPS,
    FPS_STABILITY,
    AVERAGE_FPS,
    LOW_1_FPS,
    LOW_01_FPS,
    CPU_LOAD,
    GPU_CLOCK,
    GPU_LOAD,
    CPU_TEMPERATURE,
    GPU_TEMPERATURE,
    GPU_MAX_CLOCK,
    PSS,
    GPU_MEMORY_TOTAL,
    GPU_MEMORY_SURFACE,
    GPU_MEMORY_TEXTURE,
    SYSTEM_MEMORY_FREE,
    SYSTEM_MEMORY_USED,
    CPU_LOAD_SYSTEM,
    CPU_LOAD_CORE,
    CPU_CLOCK,
    GPU_LOAD_PROCESS,
    GPU_POWER,
    GPU_FAN,
    GPU_MEMORY_DEVICE,
    GPU_MEMORY_CAPACITY,
    THERMAL_STATUS,
    COUNT
};

enum class Kind {
    NUMBER,
    MEMORY,  ///< bytes, shown in megabytes or gigabytes
    RATE     ///< a number over the time between two refreshes: there is none at the first one
};

/// Everything that is to be known of one figure. Texts live as long as the process.
struct Figure {
    const char* id = nullptr;     ///< for programs, such as "gpu.clock"
    const char* name = nullptr;   ///< for people, such as "GPU frequency"
    const char* label = nullptr;  ///< on the overlay, before the value

    struct Format {
        const char* unit = nullptr;    ///< what the value counts
        const char* suffix = nullptr;  ///< on the overlay, after the value
        Kind kind = Kind::NUMBER;
        int decimals = 0;
    } format;

    gui::WidgetType widget = gui::WidgetType::FPS;

    /// A figure without settings is a note, which is shown whenever its widget is.
    struct Settings {
        /// The switch, without the library's prefix. The colour has the same name and "_color".
        const char* property = nullptr;
        bool isOnByDefault = true;
        std::uint32_t color = 0;  ///< 0xAARRGGBB, by default
    } settings;

    /// In frame dumps. A figure without a column has no graph either.
    struct Column {
        const char* name = nullptr;
        /// NONE: beside the library's columns.
        gui::WidgetValueType slot = gui::WidgetValueType::NONE;
    } column;

    struct Origin {
        Source source;
        const char* file;      ///< that the library reads; null: the frames alone, or the machine's own files
        const char* expected;  ///< what the file must hold
    } origin;

    bool isNote() const { return settings.property == nullptr; }
    bool hasGraph() const { return column.name != nullptr; }
};

struct FigureRows {
    const Figure* first;
    std::size_t count;

    const Figure* begin() const { return first; }
    const Figure* end() const { return first + count; }
};

/// All figures, in the order in which a widget shows them.
FigureRows catalogue();

/// A number that differs between two catalogues whose figures differ in order, name or unit: for those who
/// get values from another program.
std::uint32_t catalogueSignature();

/// Which figures of the catalogue, by their index.
using FigureSet = std::bitset<64>;

std::size_t indexOf(const Figure& figure);

}  // namespace figures
