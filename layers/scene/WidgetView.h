#pragma once

#include "drawers/Drawer.h"
#include "figures/Catalogue.h"
#include "gui/LayoutDef.h"
#include "scene/WidgetRoom.h"

#include <memory>
#include <utility>
#include <vector>

namespace figures {
class Metrics;
}

namespace scene {

struct Canvas;
struct WidgetShape;

/// One widget on the screen: its drawers and their render areas, their figures, and the order of drawing.
/// Rendering thread only.
class WidgetView {
public:
    explicit WidgetView(gui::WidgetType type);
    virtual ~WidgetView() = default;
    WidgetView(const WidgetView&) = delete;
    WidgetView& operator=(const WidgetView&) = delete;

    /// Whether the settings enable the widget and anchor it somewhere: an enabled widget with an unknown
    /// position is in no row and is not drawn.
    virtual bool isShown() const;

    /// Whether the settings want what the widget shows: it is kept up to date, though it has no place on the
    /// screen while there is nothing to show.
    virtual bool isWanted() const { return isShown(); }

    /// Whether the widget has to be placed anew since the last layout.
    bool isLayoutStale() const { return mIsLayoutStale; }

    /// Before a layout: switches the widget on if the settings want it and it has something to show.
    virtual void enable() {}

    /// After enable(): adds the widget's shape if that is another than the layout's.
    virtual void collectShapes(const Canvas& /*canvas*/, std::vector<WidgetShape>& /*shapes*/) const {}

    /// Called after a change of the settings or of the surface, when the layout manager has placed the
    /// widgets: gives every drawer its rectangle, and applies colours and switches.
    void layout(const Canvas& canvas, const WidgetSet& withoutRoom = {});

    /// Whether the surface has room for the widget. One without is not drawn; a dump has its figures.
    bool hasRoom() const { return mHasRoom; }

    /// Called once a frame while the widget is shown. Returns whether the widget has to be drawn again even
    /// without a refresh.
    virtual bool onFrame() { return false; }

    /// Adds the figures that the widget shows.
    virtual void collectFigures(figures::FigureSet& /*wanted*/) const {}

    /// Updates texts and graphs.
    virtual void refresh(figures::Metrics& metrics) = 0;

    virtual void draw() = 0;

    /// Waits for background work, so that pictures do not depend on timing.
    virtual void settle() {}

    /// Adds the drawers that are switched on to the list for the post-swap hook.
    void collectDrawers(std::vector<drawer::Drawer*>& drawers) const;

protected:
    gui::Widget& widget() const { return *mWidget; }

    virtual void applySettings(const Canvas& canvas) = 0;

    bool mIsLayoutStale = false;

    /// Takes ownership of the drawer and gives it a render area of this widget.
    template <class DrawerType>
    DrawerType& place(std::unique_ptr<DrawerType> drawer, gui::RenderAreaType area) {
        DrawerType& placed = *drawer;
        placed.mWidget = mWidget;
        placed.mRenderArea = area;
        mDrawers.push_back(std::move(drawer));
        return placed;
    }

private:
    gui::Widget* mWidget;
    bool mHasRoom = true;  // since the last layout
    std::vector<std::unique_ptr<drawer::Drawer>> mDrawers;
};

}  // namespace scene
