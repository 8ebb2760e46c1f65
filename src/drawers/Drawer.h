#pragma once

#include "gui/LayoutDef.h"
#include "utils/Export.h"

#include <ostra/Ostra.h>

#include <cstdint>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

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

/// Something that the overlay shows. A drawer knows what to draw and where; the graphics-API layer that
/// creates it supplies the primitives. Drawers take no locks: only the rendering thread uses them.
///
/// Vertices are in local coordinates of the drawer's rectangle: from -1 at the left and the top to 1 at the
/// right and the bottom. Colours are RGBA, 0..1.
class KORDANIX_EXPORT Drawer {
public:
    virtual ~Drawer();

    /// Draws into the current rectangle, which may change between two draws.
    virtual void draw() = 0;

    /// Writes the drawer's current value into the record of a frame. Writes nothing by default.
    virtual void dump(Ostra::FrameDump& frameDump);

    /// Discards accumulated values; called when a frame dump starts. Does nothing by default.
    virtual void clear();

    gui::WidgetValueType mValueType = gui::WidgetValueType::NONE;

    /// Not owned. The layout manager offsets the drawer by this widget's position.
    gui::Widget* mWidget = nullptr;

    glm::vec2 mSize{0.0F};      ///< of the rectangle, canvas fractions
    glm::vec2 mPosition{0.0F};  ///< its top-left corner, canvas fractions

    /// Shifts the drawing, in clip-space units, in which the canvas is 2 wide and 2 high.
    glm::vec3 mTranslation{0.0F};

    /// The area that the layout manager computes the rectangle from.
    gui::RenderAreaType mRenderArea{};

    bool mEnabled = true;  ///< for the layer to use; the library never reads it
};

}  // namespace drawer
