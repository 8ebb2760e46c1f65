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

/// One row of widgets while a layout is made. Places a widget by writing its `mRect` x and y (y is 0 as
/// long as rows are being filled); sizes are the widgets' own. All lengths are canvas fractions.
class KORDANIX_EXPORT LinearLayout {
public:
    /// Places the widget by its position: packed from the left (0, 3, 5), from the right (2, 4, 7) or
    /// centred (1, 6). False when it would overlap a widget of the row or leave the canvas, and for any
    /// other position; the widget then keeps the last place that was tried.
    bool tryToAdd(Widget* widget);

    /// Tries the left margin, then the right side of each widget of the row in list order.
    bool tryToAddFromLeft(Widget* widget);

    /// Tries the right margin, then the left side of each widget of the row in reverse list order.
    bool tryToAddFromRight(Widget* widget);

    std::list<Widget*> mWidgets;  ///< not owned; the order decides which neighbour is tried first
    glm::vec2 mMargin{0.0F};      ///< distance from the canvas's sides; centred widgets may enter it
    glm::vec2 mSpacing{0.0F};     ///< distance between neighbours
};

/// Adds the widget to the first row that takes it, or to a new row at the end. False when the new row does
/// not take it either, which leaves that row in place and empty.
KORDANIX_EXPORT bool addToLayout(Widget* widget, std::vector<LinearLayout>& rows, glm::vec2& margin,
                                 glm::vec2& spacing);

/// Owner of the render areas and of the five widgets: takes over the settings, lays the enabled widgets out
/// in rows and gives drawers their rectangles, all in canvas fractions whatever the surface's size.
/// Except for `init`, everything runs on the rendering thread; there is no lock.
class KORDANIX_EXPORT LayoutManager {
public:
    /// The manager of the process; made on first use and never destroyed.
    static LayoutManager* getInstance();

    /// Takes both sets of render areas, in canvas units, and creates the widgets. Called once, at load.
    void init(const std::vector<RenderArea>& landscape, const std::vector<RenderArea>& portrait);

    /// Takes over positions and switches if settings were published since the last call (the first call
    /// counts as such) and says whether. Does not lay out. Costs one flag test when nothing was published.
    bool updateConfig();

    /// Lays the enabled widgets out for the orientation. A widget that does not fit where its position wants
    /// it moves on (middle to top left, top to bottom left) and keeps that position until settings change.
    /// Widgets that are disabled or have an unknown position stay at the canvas's origin.
    void updateWidgetsLayouts(bool portrait);

    /// Gives the drawer its area's size, at the area's origin moved by the drawer's widget, if it has one.
    void updateDrawerLayout(drawer::Drawer* drawer);

    /// The widget; lives as long as the process. Only after `init`.
    Widget* getWidget(WidgetType type) const;

    /// The area in canvas fractions of the current orientation. Only after `init`.
    RenderArea getRenderArea(RenderAreaType type) const;

    bool mIsPortrait = true;  ///< which set is current
    std::vector<RenderArea> mLandscapeAreas;
    std::vector<RenderArea> mPortraitAreas;
    std::vector<Widget*> mWidgets;  ///< in WidgetType order; the widgets outlive the manager
};

}  // namespace gui
