#pragma once

#include "drawers/Drawer.h"
#include "drawers/TextDrawer.h"
#include "gui/LayoutDef.h"
#include "gui/WidgetsSettings.h"
#include "scene/Canvas.h"
#include "scene/Metrics.h"
#include "scene/PrimitiveFactory.h"
#include "scene/Reading.h"
#include "scene/WidgetView.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace drawer {
class GraphicDrawer;
class RectDrawer;
}  // namespace drawer

namespace scene {

/// For a figure whose name stands in front of its value.
constexpr std::optional<gui::RenderAreaType> NO_NAME_CELL;

/// One figure of a widget: a text and, unless `graph` is NONE, a graph.
struct FigureRow {
    /// Switch and colour.
    const gui::WidgetsSettings::Graph& (*settings)() = nullptr;

    /// Name of the figure, in a cell of its own or, without one, in front of the value.
    const char* name = nullptr;
    std::optional<gui::RenderAreaType> nameArea;

    gui::RenderAreaType valueArea = {};

    /// The graph's slot in frame dumps.
    gui::WidgetValueType graph = gui::WidgetValueType::NONE;

    Reading (Metrics::*read)() = nullptr;
    std::string (*format)(Reading) = nullptr;

    /// The value at the graph's top edge; the largest value so far while it cannot be read.
    Reading (Metrics::*top)() = nullptr;
};

/// A text over the graphs, or in the strip, that is no figure of the settings.
struct NoteRow {
    gui::RenderAreaType area;
    gui::TextGravity gravity;

    /// Over graphs a text has a backdrop of its own, as wide as the text.
    bool hasBackdrop;

    std::string (*text)(Metrics&);
};

/// A widget of a strip of figures with their graphs below. Adding a figure is a row in its table.
struct FigureTable {
    gui::WidgetType type;
    gui::RenderAreaType stripArea;
    gui::RenderAreaType graphArea;
    const FigureRow* figures;
    std::size_t figureCount;
    const NoteRow* notes;
    std::size_t noteCount;
};

/// Draws such a widget: the strip's background and texts, then the graphs' background and grid once, then
/// the fills and over them the lines of the graphs, both in the order of the table, and the notes on top. So
/// every line has its own colour. The fill of n graphs has an alpha of 1 / (n + 1): each has its share and
/// the grid stays visible.
class FigureWidget : public WidgetView {
public:
    /// `table` outlives the widget.
    FigureWidget(PrimitiveFactory& factory, const FigureTable& table);

    void refresh(Metrics& metrics) override;
    void draw() override;

protected:
    void applySettings(const Canvas& canvas) override;

private:
    struct Figure {
        const FigureRow* row = nullptr;
        drawer::TextDrawer* name = nullptr;  // null: the name stands in front of the value
        drawer::TextDrawer* value = nullptr;
        drawer::GraphicDrawer* graph = nullptr;  // null: text only
        Reading reading;
    };
    struct Note {
        const NoteRow* row = nullptr;
        drawer::TextDrawer* text = nullptr;
        drawer::RectDrawer* backdrop = nullptr;  // null: none
    };

    static bool isPlotted(const Figure& figure);
    static void fitBackdrop(const Note& note, const Canvas& canvas);

    Canvas mCanvas;  // of the last layout
    drawer::RectDrawer* mStrip;
    std::vector<Figure> mFigures;
    std::vector<Note> mNotes;
    drawer::GraphicDrawer* mFirstGraph = nullptr;  // whose background and grid are drawn
};

}  // namespace scene
