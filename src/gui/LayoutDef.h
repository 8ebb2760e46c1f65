#pragma once

#include "utils/Export.h"

#include <cstdint>
#include <glm/vec4.hpp>
#include <vector>

namespace gui {

/// The virtual canvas for the layout, in canvas units: in landscape SCREEN_WIDTH wide and SCREEN_HEIGHT high,
/// in portrait the other way round. The origin is the top-left corner, and y grows downwards.
KORDANIX_EXPORT extern const float SCREEN_WIDTH;
KORDANIX_EXPORT extern const float SCREEN_HEIGHT;

/// A rectangle that gives a widget, or an element in a widget, its size and place. The definitions are in
/// canvas units; the layout manager returns canvas fractions (0..1).
struct RenderArea {
    float x;
    float y;
    float width;
    float height;
};

/// An index into a set of render areas. 0 to 39 are elements, measured from their widget's top-left corner;
/// the layer chooses which drawer uses which. Elements of a group never leave the group's whole.
enum class RenderAreaType : std::uint32_t {
    // First 171 by 55 group: a strip of one label and three pairs of name and value, a graph below.
    CPU_GPU_FOOTER = 0,  ///< band near the bottom of the group
    CPU_GPU_STRIP = 1,
    CPU_GPU_LABEL = 2,
    CPU_GPU_NAME_1 = 3,
    CPU_GPU_NAME_2 = 4,
    CPU_GPU_NAME_3 = 5,
    CPU_GPU_VALUE_1 = 6,
    CPU_GPU_VALUE_2 = 7,
    CPU_GPU_VALUE_3 = 8,
    CPU_GPU_GRAPH = 9,
    CPU_GPU_WHOLE = 10,

    // Memory: a strip of five pairs of name and value, a graph below.
    MEMORY_STRIP = 11,
    MEMORY_LABEL = 12,  ///< over the graph
    MEMORY_NAME_1 = 13,
    MEMORY_NAME_2 = 14,
    MEMORY_NAME_3 = 15,
    MEMORY_NAME_4 = 16,
    MEMORY_NAME_5 = 17,
    MEMORY_VALUE_1 = 18,
    MEMORY_VALUE_2 = 19,
    MEMORY_VALUE_3 = 20,
    MEMORY_VALUE_4 = 21,
    MEMORY_VALUE_5 = 22,
    MEMORY_GRAPH = 23,
    MEMORY_WHOLE = 24,

    // Second 171 by 55 group: a strip of three texts side by side, a graph below.
    FPS_STRIP = 25,
    FPS_TEXT_1 = 26,
    FPS_TEXT_2 = 27,
    FPS_TEXT_3 = 28,
    FPS_NOTE = 29,  ///< in the right half of the graph
    FPS_GRAPH = 30,
    FPS_WHOLE = 31,

    GPU_ACTIVITY_THUMBNAIL_WHOLE = 32,
    GPU_ACTIVITY_THUMBNAIL_LABEL = 33,

    // GPU activity: three lines above a band.
    GPU_ACTIVITY_LINE_1 = 34,
    GPU_ACTIVITY_LINE_2 = 35,
    GPU_ACTIVITY_LINE_3 = 36,
    GPU_ACTIVITY_BAND = 37,
    GPU_ACTIVITY_BAND_OVERLAY = 38,  ///< the same rectangle as the band
    GPU_ACTIVITY_WHOLE = 39,

    // Outlines of the widgets, in WidgetType order.
    OUTLINE_FPS = 40,
    OUTLINE_CPU_GPU = 41,
    OUTLINE_GPU_ACTIVITY = 42,
    OUTLINE_GPU_ACTIVITY_THUMBNAIL = 43,
    OUTLINE_MEMORY = 44,

    MARGIN = 45,   ///< distance from the canvas's sides (width) and from its top and bottom (height)
    SPACING = 46,  ///< distance between neighbours in a row (width) and between rows (height)
};

/// The widgets, and their indexes in the layout manager's list.
enum class WidgetType : std::uint32_t {
    FPS = 0,
    CPU_GPU = 1,
    GPU_ACTIVITY = 2,
    GPU_ACTIVITY_THUMBNAIL = 3,
    MEMORY = 4,
};

/// One laid-out widget.
struct Widget {
    WidgetType mType;
    RenderAreaType mRenderArea;  ///< its outline
    glm::vec4 mRect{0.0F};       ///< (x, y, width, height) in canvas fractions; 0 until the first layout
    std::int32_t mPosition =
        0;                 ///< a WidgetsSettings::Position; with any other value the widget is not placed
    bool mEnabled = true;  ///< takes part in the layout
};

/// The palette of 12 RGBA colours (0..1) that layers index. Built at load; the library never changes it.
KORDANIX_EXPORT extern std::vector<glm::vec4>& gColor;

}  // namespace gui
