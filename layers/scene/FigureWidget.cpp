#include "scene/FigureWidget.h"

#include "drawers/GraphicDrawer.h"
#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "scene/Canvas.h"
#include "scene/Style.h"

#include <memory>

namespace scene {

namespace {

/// Samples in a graph's history: with a refresh each 120 ms, the last 12 seconds.
constexpr unsigned int HISTORY = 100;

/// Between a figure's name and its value, in canvas units.
constexpr float NAME_GAP = 3.0F;

/// Left and right of the text, in canvas units.
constexpr float BACKDROP_MARGIN = 2.0F;

/// The top of the graph lies a little above the top of the scale, so that a line there is not cut.
constexpr float HEADROOM = 1.04F;

std::unique_ptr<drawer::GraphicDrawer> createGraph(PrimitiveFactory& factory, gui::WidgetValueType slot) {
    return std::make_unique<drawer::GraphicDrawer>(
        HISTORY, factory.createMesh(Topology::TRIANGLE_STRIP), factory.createMesh(Topology::LINE_STRIP),
        factory.createRect(), factory.createGrid(factory.createMesh(Topology::LINES)), slot);
}

/// Whether it is another text than before.
bool setText(drawer::TextDrawer& drawer, const std::string& text) {
    if (drawer.mText == text) {
        return false;
    }
    drawer.setText(text);
    return true;
}

}  // namespace

FigureWidget::FigureWidget(PrimitiveFactory& factory, const FigureTable& table)
    : WidgetView(table.type),
      mCanvas(factory.getSurfaceSize()),
      mStrip(&place(factory.createRect(), table.stripArea)) {
    for (std::size_t i = 0; i < table.figureCount; ++i) {
        const FigureRow& row = table.figures[i];
        Figure figure;
        figure.row = &row;
        if (row.nameArea) {
            figure.name = &place(factory.createText(), *row.nameArea);
            figure.name->setText(row.name);
            figure.name->setTextGravity(gui::TextGravity::RIGHT);
        }
        figure.value = &place(factory.createText(), row.valueArea);
        if (row.graph != gui::WidgetValueType::NONE) {
            figure.graph = &place(createGraph(factory, row.graph), table.graphArea);
            if (mFirstGraph == nullptr) {
                mFirstGraph = figure.graph;
            }
        }
        mFigures.push_back(figure);
    }
    for (std::size_t i = 0; i < table.noteCount; ++i) {
        const NoteRow& row = table.notes[i];
        Note note;
        note.row = &row;
        if (row.hasBackdrop) {
            note.backdrop = &place(factory.createRect(), row.area);
            note.backdrop->mColor = backdropColor();
        }
        note.text = &place(factory.createText(), row.area);
        note.text->setText("");
        note.text->setTextGravity(row.gravity);
        mNotes.push_back(note);
    }
}

void FigureWidget::applySettings(const Canvas& canvas) {
    mCanvas = canvas;
    mStrip->mColor = backgroundColor();
    unsigned int shares = 1;
    for (const Figure& figure : mFigures) {
        shares += figure.graph != nullptr && figure.row->settings().mEnabled.getValue() ? 1 : 0;
    }
    for (Figure& figure : mFigures) {
        const gui::WidgetsSettings::Graph& settings = figure.row->settings();
        const bool isOn = settings.mEnabled.getValue();
        for (drawer::TextDrawer* text : {figure.name, figure.value}) {
            if (text != nullptr) {
                text->mEnabled = isOn;
                text->setTextColor(settings.getTextColor());
                setTextHeight(*text, FIGURE_TEXT_HEIGHT, canvas);
            }
        }
        if (figure.name != nullptr) {
            figure.name->mSize.x -= NAME_GAP / canvas.units.x;
        }
        if (figure.graph != nullptr) {
            figure.graph->mEnabled = isOn;
            figure.graph->setColor(settings.getGraphColor(shares));
            figure.graph->mBackground->mColor = backgroundColor();
            figure.graph->mGrid->mMesh->mColor = gridColor();
        }
    }
    for (const Note& note : mNotes) {
        note.text->setTextColor(plainTextColor());
        setTextHeight(*note.text, NOTE_TEXT_HEIGHT, canvas);
        fitBackdrop(note, canvas);
    }
}

bool FigureWidget::isPlotted(const Figure& figure) {
    // A graph has no scale before its first sample.
    return figure.graph != nullptr && figure.graph->mEnabled && figure.graph->mMaxValue > 0.0F;
}

void FigureWidget::fitBackdrop(const Note& note, const Canvas& canvas) {
    if (note.backdrop == nullptr) {
        return;
    }
    const drawer::TextDrawer& text = *note.text;
    const glm::vec2 size = measureText(text, canvas);
    const glm::vec2 room = text.mSize - size;
    const bool isRight = text.mTextGravity == gui::TextGravity::RIGHT;
    note.backdrop->mEnabled = !text.mText.empty();
    note.backdrop->mSize = size;
    note.backdrop->mPosition = text.mPosition + glm::vec2(isRight ? room.x : 0.0F, room.y * 0.5F);
    inset(*note.backdrop, {-BACKDROP_MARGIN, 0.0F}, canvas);
}

void FigureWidget::refresh(Metrics& metrics) {
    // All readings come before the first graph: a scale can depend on several of them.
    for (Figure& figure : mFigures) {
        if (figure.value->mEnabled) {
            figure.reading = (metrics.*figure.row->read)();
        }
    }
    for (Figure& figure : mFigures) {
        if (!figure.value->mEnabled) {
            continue;
        }
        const std::string value = figure.row->format(figure.reading);
        setText(*figure.value, figure.name != nullptr ? value : figure.row->name + (' ' + value));
        // A graph stands still while its figure cannot be read, and is not there before that.
        if (figure.graph != nullptr && figure.reading) {
            const auto sample = static_cast<float>(*figure.reading);
            const Reading top = (metrics.*figure.row->top)();
            if (top) {
                figure.graph->addValue(sample, static_cast<float>(*top) * HEADROOM);
            } else {
                figure.graph->addValue(sample);
            }
        }
    }
    for (const Note& note : mNotes) {
        if (setText(*note.text, note.row->text(metrics))) {
            fitBackdrop(note, mCanvas);
        }
    }
}

void FigureWidget::draw() {
    mStrip->draw();
    for (const Figure& figure : mFigures) {
        for (drawer::TextDrawer* text : {figure.name, figure.value}) {
            if (text != nullptr && text->mEnabled) {
                text->draw();
            }
        }
    }
    if (mFirstGraph != nullptr) {
        mFirstGraph->drawBackground();
        mFirstGraph->drawGrid();
    }
    for (const Figure& figure : mFigures) {
        if (isPlotted(figure)) {
            figure.graph->recalculateMesh();
            drawMesh(*figure.graph, *figure.graph->mFillMesh);
        }
    }
    for (const Figure& figure : mFigures) {
        if (isPlotted(figure)) {
            drawMesh(*figure.graph, *figure.graph->mLineMesh);
        }
    }
    for (const Note& note : mNotes) {
        if (note.backdrop != nullptr && note.backdrop->mEnabled) {
            note.backdrop->draw();
        }
        note.text->draw();
    }
}

}  // namespace scene
