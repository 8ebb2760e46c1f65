#pragma once

#include "gui/LayoutDef.h"
#include "utils/Export.h"

#include <ostra/Ostra.h>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <cstdint>

namespace gui {

/// The dumpable values: indexes into gWidgetsMeta and into the values of a frame dump.
enum class WidgetValueType : std::int32_t {
    FPS = 0,
    FPS_MEDIAN = 1,
    FPS_STABILITY = 2,
    CPU_LOAD = 3,
    GPU_LOAD = 4,
    GPU_FREQ = 5,
    MEM_PSS = 6,
    MEM_GPU = 7,
    MEM_SURF = 8,
    MEM_TEX = 9,
    MEM_SYS_FREE = 10,
    NONE = 11,  ///< the drawer writes nothing into dumps
};

}  // namespace gui

namespace drawer {

/// Whatever the overlay shows. A drawer knows what to draw and where; the graphics-API layer that creates it
/// supplies the primitives it draws with. Drawers take no locks: every operation belongs to the rendering
/// thread.
///
/// Vertices are in local coordinates of the drawer's rectangle: -1..1 from left to right and, downwards, from
/// top to bottom. Colours are RGBA, 0..1.
class KORDANIX_EXPORT Drawer {
public:
    virtual ~Drawer();

    /// Draws with the current rectangle, which may change between any two draws.
    virtual void draw() = 0;

    /// Writes the drawer's current value into the record of a frame. Writes nothing by default.
    virtual void dump(Ostra::FrameDump& frameDump);

    /// Forgets what has accumulated; called when a frame dump starts. Does nothing by default.
    virtual void clear();

    gui::WidgetValueType mValueType = gui::WidgetValueType::NONE;

    /// Not owned. The layout manager offsets the drawer by this widget's position.
    gui::Widget* mWidget = nullptr;

    glm::vec2 mSize{0.0F};      ///< of the rectangle, canvas fractions
    glm::vec2 mPosition{0.0F};  ///< its top-left corner, canvas fractions

    /// Moves what is drawn, in clip-space units, in which the canvas is 2 wide and 2 high.
    glm::vec3 mTranslation{0.0F};

    /// Where the layout manager takes the rectangle from.
    gui::RenderAreaType mRenderArea{};

    bool mEnabled = true;  ///< at the layer's disposal, never read here
};

}  // namespace drawer
