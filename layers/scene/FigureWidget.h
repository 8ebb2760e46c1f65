#pragma once

#include "figures/Catalogue.h"
#include "figures/FigureSettings.h"
#include "figures/Metrics.h"
#include "scene/Canvas.h"
#include "scene/FigureWidgets.h"
#include "scene/PrimitiveFactory.h"
#include "scene/WidgetView.h"

#include <vector>

namespace drawer {
class GraphicDrawer;
class RectDrawer;
class TextDrawer;
}  // namespace drawer

namespace scene {

/// A widget with a strip of figures and their graphs below. Draws the strip's background and texts, then the
/// graphs' common background and grid, then the fills and over them the lines of the graphs, both in the
/// order of the catalogue, and the notes on top. So no fill covers a line. The fill of n graphs has an alpha
/// of 1 / (n + 1), so that all fills and the grid stay visible.
///
/// Where curves have different scales, the first one with each says it.
///
/// A figure that cannot be read takes no room, unless its user has switched it on by hand, and neither does a
/// widget without any. ShapeSettings can leave out the graphs and notes, and fit the widget to its figures.
class FigureWidget : public WidgetView {
public:
    /// `widget` must outlive the object.
    FigureWidget(PrimitiveFactory& factory, const FigureWidgetLayout& widget);

    bool isWanted() const override;
    void enable() override;
    void collectShapes(const Canvas& canvas, std::vector<WidgetShape>& shapes) const override;
    void collectFigures(figures::FigureSet& wanted) const override;
    void refresh(figures::Metrics& metrics) override;
    void draw() override;

protected:
    void applySettings(const Canvas& canvas) override;

private:
    /// The drawers of a figure of the catalogue.
    struct View {
        const figures::Figure* figure = nullptr;
        bool hasCell = true;                 // of its own, while the strip is not shared
        drawer::TextDrawer* name = nullptr;  // null: the name stands in front of the value
        drawer::TextDrawer* value = nullptr;
        drawer::GraphicDrawer* graph = nullptr;  // null: text only

        bool isReadable = false;
        int missed = 0;        // refreshes without a value since the last one with
        bool isShown = false;  // since the last layout
        bool hasRoom = true;   // in the strip
        bool saysScale = false;
        float headroom = 1.0F;  // of the graph, over the top of its scale

        bool isDrawn() const { return isShown && hasRoom; }
        bool isOn() const { return figures::settingsOf(*figure).mEnabled.getValue(); }
    };
    struct Note {
        const NoteRow* row = nullptr;
        drawer::TextDrawer* text = nullptr;
        drawer::RectDrawer* backdrop = nullptr;  // null: none
    };

    void addView(PrimitiveFactory& factory, const figures::Figure& figure);
    bool isReadable() const;
    void noteReadability(View& view, bool hasValue);
    void noteScales();
    float labelWidth() const;
    bool isEveryCellWideEnough(const Canvas& canvas) const;
    void leaveOutWhatDoesNotFit(const Canvas& canvas);
    static float widthOf(const View& view);
    void shareStrip(const Canvas& canvas);
    static bool isPlotted(const View& view);
    void fitNote(const Note& note, const Canvas& canvas);
    static void fitBackdrop(const Note& note, const Canvas& canvas);

    const FigureWidgetLayout& mLayout;
    Canvas mCanvas;  // of the last layout
    drawer::RectDrawer* mStrip;
    std::vector<View> mViews;
    std::vector<Note> mNotes;
    std::vector<float> mTops;                      // of the views' graphs
    drawer::GraphicDrawer* mFirstGraph = nullptr;  // whose background and grid are drawn
};

}  // namespace scene
