#include "scene/FigureWidget.h"

#include "drawers/GraphicDrawer.h"
#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "figures/TextFormat.h"
#include "scene/Canvas.h"
#include "scene/ShapeSettings.h"
#include "scene/Style.h"
#include "scene/WidgetScale.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>

namespace scene {

namespace {

/// Samples in a graph's history: the last 12 seconds, with a refresh every 120 ms.
constexpr unsigned int HISTORY = 100;

/// The gap between a figure's name and its value, in canvas units.
constexpr float NAME_GAP = 3.0F;

/// The gap around a name in a shared strip, in units of a line, which is 2 high.
constexpr float SHARED_GAP = 1.4F;

/// Around each figure of a strip that is as wide as its texts, besides; and right of the last one, in canvas
/// units.
constexpr float FITTED_GAP = 0.6F;
constexpr float FITTED_MARGIN = 6.0F;

bool isFitted() {
    return shapeSettings().isWidthFitted.getValue();
}

/// As wide as most values of the figure.
std::string typicalValue(const figures::Figure& figure) {
    if (figure.format.kind == figures::Kind::MEMORY) {
        return "888MB";
    }
    const bool isShort = *figure.format.suffix == '%';
    return std::string(figure.format.decimals > 0 ? "888.8"
                       : isShort                  ? "888"
                                                  : "8888") +
           figure.format.suffix;
}

/// Left and right of the text, in canvas units.
constexpr float BACKDROP_MARGIN = 2.0F;

/// The top of the graph is a little above the top of the scale, so that a line there is not cut.
constexpr float HEADROOM = 1.04F;

std::unique_ptr<drawer::GraphicDrawer> createGraph(PrimitiveFactory& factory, gui::WidgetValueType slot) {
    return std::make_unique<drawer::GraphicDrawer>(
        HISTORY, factory.createMesh(Topology::TRIANGLE_STRIP), factory.createMesh(Topology::LINE_STRIP),
        factory.createRect(), factory.createGrid(factory.createMesh(Topology::LINES)), slot);
}

/// Returns whether the text has changed.
bool setText(drawer::TextDrawer& drawer, const std::string& text) {
    if (drawer.mText == text) {
        return false;
    }
    drawer.setText(text);
    return true;
}

}  // namespace

FigureWidget::FigureWidget(PrimitiveFactory& factory, const FigureWidgetLayout& widget)
    : WidgetView(widget.type),
      mLayout(widget),
      mCanvas(factory.getSurfaceSize()),
      mStrip(&place(factory.createRect(), widget.stripArea)) {
    for (const figures::Figure& figure : figures::catalogue()) {
        if (figure.widget == widget.type && !figure.isNote()) {
            addView(factory, figure);
        }
    }
    for (std::size_t i = 0; i < widget.noteCount; ++i) {
        const NoteRow& row = widget.notes[i];
        Note note;
        note.row = &row;
        if (row.hasBackdrop) {
            note.backdrop = &place(factory.createRect(), row.area);
        }
        note.text = &place(factory.createText(), row.area);
        note.text->setText("");
        note.text->setTextGravity(row.gravity);
        mNotes.push_back(note);
    }
}

void FigureWidget::addView(PrimitiveFactory& factory, const figures::Figure& figure) {
    const std::size_t index = mViews.size();
    const bool hasNameCell = mLayout.cells[0].name.has_value();
    View view;
    view.figure = &figure;
    view.hasCell = index < mLayout.cellCount;
    FigureCell cell = {mLayout.stripArea, mLayout.stripArea};
    if (view.hasCell) {
        cell = mLayout.cells[index];
    }
    if (hasNameCell) {
        view.name = &place(factory.createText(), *cell.name);
        view.name->setText(figure.label);
        view.name->setTextGravity(gui::TextGravity::RIGHT);
    }
    view.value = &place(factory.createText(), cell.value);
    if (figure.hasGraph()) {
        view.graph = &place(createGraph(factory, figure.column.slot), mLayout.graphArea);
        if (mFirstGraph == nullptr) {
            mFirstGraph = view.graph;
        }
    }
    mViews.push_back(view);
}

bool FigureWidget::isReadable() const {
    return std::any_of(mViews.begin(), mViews.end(),
                       [](const View& view) { return view.isOn() && view.isReadable; });
}

bool FigureWidget::isWanted() const {
    return mLayout.widgetSwitch().getValue() &&
           std::any_of(mViews.begin(), mViews.end(), [](const View& view) { return view.isOn(); });
}

void FigureWidget::enable() {
    // What a user has asked for by hand is there, with or without a value.
    const bool isHiding = shapeSettings().hidesUnreadable.getValue();
    const auto isByHand = [isHiding](const std::string& name) {
        return figures::isSetByHand(name) && !isHiding;
    };
    const bool isWholeByHand = !isReadable() && isByHand(mLayout.widgetSwitch().mName);
    bool hasContent = false;
    for (View& view : mViews) {
        view.isShown = view.isOn() && (view.isReadable || isWholeByHand ||
                                       isByHand(figures::settingsOf(*view.figure).mEnabled.mName));
        hasContent = hasContent || view.isShown;
    }
    widget().mEnabled = isWanted() && hasContent;
}

void FigureWidget::collectShapes(const Canvas& canvas, std::vector<WidgetShape>& shapes) const {
    const ShapeSettings& settings = shapeSettings();
    WidgetShape shape = {mLayout.type, 0.0F, 1.0F / canvas.pixels.x, !settings.hasGraphs.getValue()};
    if (isFitted()) {
        float lines = 0.0F;
        for (const View& view : mViews) {
            lines += view.isShown ? widthOf(view) + FITTED_GAP : 0.0F;
        }
        shape.width = (labelWidth() + FITTED_MARGIN) / canvas.units.x +
                      0.5F * lines * textPixels(FIGURE_TEXT_HEIGHT, canvas) / canvas.pixels.x;
    }
    if (shape.width != 0.0F || shape.isLine) {
        shapes.push_back(shape);
    }
}

/// One that cannot be read for a moment stays: the widget must not jump.
void FigureWidget::noteReadability(View& view, bool hasValue) {
    constexpr int PATIENCE = 8;  // refreshes, about a second
    view.missed = hasValue ? 0 : std::min(view.missed + 1, PATIENCE);
    const bool isReadable = hasValue || (view.isReadable && view.missed < PATIENCE);
    mIsLayoutStale = mIsLayoutStale || (isReadable != view.isReadable && view.isOn());
    view.isReadable = isReadable;
}

/// Without regard to what the strip has room for, so that a text that says its scale never goes back and
/// forth.
void FigureWidget::noteScales() {
    std::vector<float>& tops = mTops;
    tops.clear();
    for (const View& view : mViews) {
        const bool isCurve = view.graph != nullptr && view.isOn() && view.isReadable;
        const float top = isCurve ? view.graph->mMaxValue : 0.0F;
        tops.push_back(top);
    }
    for (std::size_t i = 0; i < mViews.size(); ++i) {
        View& view = mViews[i];
        const auto isOther = [&](float top) { return top > 0.0F && top != tops[i]; };
        const bool isPercent = *view.figure->format.suffix == '%';
        const bool saysScale =
            tops[i] > 0.0F && !isPercent && std::any_of(tops.begin(), tops.end(), isOther) &&
            std::find(tops.begin(), tops.end(), tops[i]) == tops.begin() + static_cast<std::ptrdiff_t>(i);
        mIsLayoutStale = mIsLayoutStale || saysScale != view.saysScale;
        view.saysScale = saysScale;
    }
}

void FigureWidget::collectFigures(figures::FigureSet& wanted) const {
    for (const figures::Figure& figure : figures::catalogue()) {
        if (figure.widget == mLayout.type &&
            (figure.isNote() || figures::settingsOf(figure).mEnabled.getValue())) {
            wanted.set(figures::indexOf(figure));
        }
    }
}

void FigureWidget::applySettings(const Canvas& canvas) {
    mCanvas = canvas;
    mStrip->mColor = backgroundColor();
    // What is missing leaves no gap, and what says its scale needs more room than others.
    const bool isShared =
        shapeSettings().isWidthFitted.getValue() ||
        std::any_of(mViews.begin(), mViews.end(), [](const View& view) {
            return view.saysScale || (view.hasCell ? view.isOn() && !view.isShown : view.isShown);
        });
    for (View& view : mViews) {
        view.hasRoom = true;
    }
    if (isShared || !isEveryCellWideEnough(canvas)) {
        leaveOutWhatDoesNotFit(canvas);
        shareStrip(canvas);
    }
    unsigned int shares = 1;
    for (const View& view : mViews) {
        shares += view.graph != nullptr && view.isDrawn() ? 1 : 0;
    }
    for (const View& view : mViews) {
        const gui::WidgetsSettings::Graph& settings = figures::settingsOf(*view.figure);
        for (drawer::TextDrawer* text : {view.name, view.value}) {
            if (text != nullptr) {
                text->mEnabled = view.isShown;
                text->setTextColor(settings.getTextColor());
                setTextHeight(*text, FIGURE_TEXT_HEIGHT, canvas);
            }
        }
        if (view.name != nullptr) {
            view.name->mSize.x -= NAME_GAP / canvas.units.x;
        }
        if (view.graph != nullptr) {
            view.graph->mEnabled = view.isShown;
            view.graph->setColor(settings.getGraphColor(shares));
            view.graph->mBackground->mColor = backgroundColor();
            view.graph->mGrid->mMesh->mColor = gridColor();
        }
    }
    for (const Note& note : mNotes) {
        note.text->setTextColor(plainTextColor());
        setTextHeight(*note.text, NOTE_TEXT_HEIGHT, canvas);
        const float height = textHeight(NOTE_TEXT_HEIGHT, canvas);
        if (note.text->mSize.y < height) {  // grows upwards, over the graph
            note.text->mPosition.y -= height - note.text->mSize.y;
            note.text->mSize.y = height;
        }
        if (note.backdrop != nullptr) {
            note.backdrop->mColor = backdropColor();
        }
        fitNote(note, canvas);
    }
}

/// In canvas units.
float FigureWidget::labelWidth() const {
    constexpr float NO_LABEL = 6.0F;
    const bool hasLabel =
        mNotes.empty() || (!mNotes.front().text->mText.empty() && shapeSettings().hasGraphs.getValue());
    return hasLabel ? mLayout.labelWidth : std::min(mLayout.labelWidth, NO_LABEL);
}

/// Whether lines of LINE_PIXELS fit into the figures' own cells.
bool FigureWidget::isEveryCellWideEnough(const Canvas& canvas) const {
    const auto isWide = [&canvas](const drawer::Drawer& cell, float width) {
        return cell.mSize.x * canvas.pixels.x >= 0.5F * width * LINE_PIXELS;
    };
    return std::all_of(mViews.begin(), mViews.end(), [&](const View& view) {
        const float name = lineWidth(view.figure->label) + SHARED_GAP;
        const float value = widthOf(view) - name;
        return !view.isShown ||
               (view.name == nullptr ? isWide(*view.value, name + value)
                                     : isWide(*view.name, name) && isWide(*view.value, value));
    });
}

/// Leaves out the last figures of a shared strip until lines of LINE_PIXELS fit; the first one stays. A dump
/// has them all.
void FigureWidget::leaveOutWhatDoesNotFit(const Canvas& canvas) {
    const float room = (mStrip->mSize.x - labelWidth() / canvas.units.x) * canvas.pixels.x;
    float used = 0.0F;
    bool isFirst = true;
    for (View& view : mViews) {
        if (view.isShown) {
            used += 0.5F * LINE_PIXELS * widthOf(view);
            view.hasRoom = isFirst || used <= room;
            isFirst = false;
        }
    }
}

/// In units of a line, which is 2 high.
float FigureWidget::widthOf(const View& view) {
    return lineWidth(view.figure->label) + SHARED_GAP +
           lineWidth((view.saysScale ? "8888/" : "") + typicalValue(*view.figure));
}

/// Divides the strip among the visible figures, in proportion to the widths of their texts.
void FigureWidget::shareStrip(const Canvas& canvas) {
    float all = 0.0F;
    for (const View& view : mViews) {
        all += view.isDrawn() ? widthOf(view) : 0.0F;
    }
    const float left = labelWidth() / canvas.units.x;
    const float right = isFitted() ? FITTED_MARGIN / canvas.units.x : 0.0F;
    const float unit = (mStrip->mSize.x - left - right) / all;
    glm::vec2 position(mStrip->mPosition.x + left, mStrip->mPosition.y);
    for (const View& view : mViews) {
        if (!view.isDrawn()) {
            continue;
        }
        const float name = (lineWidth(view.figure->label) + SHARED_GAP) * unit;
        view.value->mPosition = position;
        view.value->mSize = {widthOf(view) * unit, mStrip->mSize.y};
        position.x += view.value->mSize.x;
        if (view.name != nullptr) {
            view.name->mPosition = view.value->mPosition;
            view.name->mSize = {name, mStrip->mSize.y};
            view.value->mPosition.x += name;
            view.value->mSize.x -= name;
        }
    }
}

bool FigureWidget::isPlotted(const View& view) {
    // A graph has no scale before its first sample.
    return view.graph != nullptr && view.isDrawn() && view.graph->mMaxValue > 0.0F;
}

/// Gives a note that needs more room than its cell has the rest of its row.
void FigureWidget::fitNote(const Note& note, const Canvas& canvas) {
    drawer::TextDrawer& text = *note.text;
    const float needed =
        0.5F * lineWidth(text.mText) * textPixels(NOTE_TEXT_HEIGHT, canvas) / canvas.pixels.x;
    if (needed > text.mSize.x) {
        const float margin = BACKDROP_MARGIN / canvas.units.x;
        const float left = mStrip->mPosition.x + margin;
        const float right = mStrip->mPosition.x + mStrip->mSize.x - margin;
        if (text.mTextGravity == gui::TextGravity::RIGHT) {
            const float end = text.mPosition.x + text.mSize.x;
            text.mSize.x = std::min(needed, end - left);
            text.mPosition.x = end - text.mSize.x;
        } else {
            text.mSize.x = std::min(needed, right - text.mPosition.x);
        }
    }
    fitBackdrop(note, canvas);
}

void FigureWidget::fitBackdrop(const Note& note, const Canvas& canvas) {
    note.text->mEnabled = !note.text->mText.empty() && isLegible(*note.text, canvas);
    if (note.backdrop == nullptr) {
        return;
    }
    const drawer::TextDrawer& text = *note.text;
    const glm::vec2 size = measureText(text, canvas);
    const glm::vec2 room = text.mSize - size;
    const bool isRight = text.mTextGravity == gui::TextGravity::RIGHT;
    note.backdrop->mEnabled = text.mEnabled;
    note.backdrop->mSize = size;
    note.backdrop->mPosition = text.mPosition + glm::vec2(isRight ? room.x : 0.0F, room.y * 0.5F);
    inset(*note.backdrop, {-BACKDROP_MARGIN, 0.0F}, canvas);
}

void FigureWidget::refresh(figures::Metrics& metrics) {
    for (View& view : mViews) {
        if (!view.isOn()) {
            continue;
        }
        const figures::Figure& figure = *view.figure;
        const figures::Reading& reading = metrics.reading(figure);
        noteReadability(view, reading.has_value());
        if (reading || !view.isReadable) {
            const std::string value =
                view.saysScale && reading
                    ? figures::formatWithTop(figure, reading, view.graph->mMaxValue / view.headroom)
                    : figures::format(figure, reading);
            setText(*view.value, view.name != nullptr ? value : figure.label + (' ' + value));
        }
        // A graph does not move while its figure cannot be read, and is not drawn before the first reading.
        if (view.graph != nullptr && reading) {
            const auto sample = static_cast<float>(*reading);
            const figures::Reading top = metrics.top(figure);
            view.headroom = top ? HEADROOM : 1.0F;
            if (top) {
                view.graph->addValue(sample, static_cast<float>(*top) * HEADROOM);
            } else {
                view.graph->addValue(sample);
            }
        }
    }
    noteScales();
    for (const Note& note : mNotes) {
        if (setText(*note.text, note.row->text(metrics))) {
            fitNote(note, mCanvas);
        }
    }
}

void FigureWidget::draw() {
    mStrip->draw();
    for (const View& view : mViews) {
        for (drawer::TextDrawer* text : {view.name, view.value}) {
            if (text != nullptr && view.isDrawn()) {
                text->draw();
            }
        }
    }
    if (!shapeSettings().hasGraphs.getValue()) {
        return;
    }
    if (mFirstGraph != nullptr) {
        mFirstGraph->drawBackground();
        mFirstGraph->drawGrid();
    }
    for (const View& view : mViews) {
        if (isPlotted(view)) {
            view.graph->recalculateMesh();
            drawMesh(*view.graph, *view.graph->mFillMesh);
        }
    }
    for (const View& view : mViews) {
        if (isPlotted(view)) {
            drawMesh(*view.graph, *view.graph->mLineMesh);
        }
    }
    for (const Note& note : mNotes) {
        if (note.backdrop != nullptr && note.backdrop->mEnabled) {
            note.backdrop->draw();
        }
        if (note.text->mEnabled) {
            note.text->draw();
        }
    }
}

}  // namespace scene
