#pragma once

#include "gui/LayoutDef.h"
#include "utils/Export.h"

#include <glm/vec2.hpp>
#include <list>
#include <vector>

namespace drawer {
class Drawer;
}

namespace gui {

/// One row of widgets during a layout. Places a widget by writing x and y of its `mRect` (y is 0 while the
/// rows are being filled); a widget keeps its own size. All lengths are canvas fractions.
class KORDANIX_EXPORT LinearLayout {
public:
    /// Places the widget by its position: packed from the left (0, 3, 5), from the right (2, 4, 7) or centred
    /// (1, 6). Returns false when it would overlap a widget of the row or leave the canvas, and for any other
    /// position; the widget then stays at the last place tried.
    bool tryToAdd(Widget* widget);

    /// Tries the left margin, then the right side of each widget in the row, in list order.
    bool tryToAddFromLeft(Widget* widget);

    /// Tries the right margin, then the left side of each widget in the row, in reverse list order.
    bool tryToAddFromRight(Widget* widget);

    std::list<Widget*> mWidgets;  ///< not owned; the order decides which neighbour is tried first
    glm::vec2 mMargin{0.0F};      ///< distance from the canvas's sides; centred widgets may enter it
    glm::vec2 mSpacing{0.0F};     ///< distance between neighbours
};

/// Adds the widget to the first row that takes it, or to a new row at the end. Returns false when even the
/// new row does not take it; that row then stays, empty.
KORDANIX_EXPORT bool addToLayout(Widget* widget, std::vector<LinearLayout>& rows, glm::vec2& margin,
                                 glm::vec2& spacing);

/// Owns the render areas and the five widgets: applies the settings, arranges the enabled widgets in rows and
/// gives drawers their rectangles, all in canvas fractions, whatever the surface's size. Only the rendering
/// thread uses it, except for `init`; there is no lock.
class KORDANIX_EXPORT LayoutManager {
public:
    /// Returns the process's manager, made on first use and never destroyed.
    static LayoutManager* getInstance();

    /// Takes both sets of render areas, in canvas units, and creates the widgets. Called once, at load.
    void init(const std::vector<RenderArea>& landscape, const std::vector<RenderArea>& portrait);

    /// Applies positions and switches if somebody published settings since the last call (the first call
    /// always does), and returns whether it did. Does not lay out. Otherwise costs one flag test.
    bool updateConfig();

    /// Lays the enabled widgets out for the orientation. A widget that does not fit at its position moves on
    /// (from the middle to the top left, from the top to the bottom left) and keeps the new position until
    /// settings change. Widgets that are disabled or have an unknown position stay at the canvas's origin.
    void updateWidgetsLayouts(bool portrait);

    /// Gives the drawer its area's size, and the area's origin plus the position of the drawer's widget, if
    /// any.
    void updateDrawerLayout(drawer::Drawer* drawer);

    /// The widget, which lives as long as the process. Only after `init`.
    Widget* getWidget(WidgetType type) const;

    /// The area for the current orientation, in canvas fractions. Only after `init`.
    RenderArea getRenderArea(RenderAreaType type) const;

    bool mIsPortrait = true;  ///< which set is current
    std::vector<RenderArea> mLandscapeAreas;
    std::vector<RenderArea> mPortraitAreas;
    std::vector<Widget*> mWidgets;  ///< in WidgetType order; the widgets outlive the manager
};

}  // namespace gui
