#include "scene/FpsWidget.h"

#include "scene/TextFormat.h"

namespace scene {

namespace {

using Area = gui::RenderAreaType;
using Value = gui::WidgetValueType;

using Fps = gui::WidgetsSettings::Widgets::Fps;

template <gui::WidgetsSettings::Graph Fps::*GRAPH>
const gui::WidgetsSettings::Graph& settingsOf() {
    return gui::WidgetsSettings::getWidgets().mFps.*GRAPH;
}

std::string average(Metrics& metrics) {
    return "Avg " + formatRate(metrics.averageFps());
}

constexpr FigureSpec FIGURES[] = {
    {settingsOf<&Fps::mCurrent>,
     "FPS",
     {},
     Area::FPS_TEXT_1,
     &Metrics::currentFps,
     formatRate,
     Value::FPS,
     &Metrics::maxFps},
    {settingsOf<&Fps::mMedian>,
     "Med",
     {},
     Area::FPS_TEXT_2,
     &Metrics::medianFps,
     formatRate,
     Value::NONE,
     nullptr},
    {settingsOf<&Fps::mStability>,
     "Stab",
     {},
     Area::FPS_TEXT_3,
     &Metrics::fpsStability,
     formatPercent,
     Value::NONE,
     nullptr},
};

constexpr NoteSpec NOTES[] = {
    {Area::FPS_NOTE, gui::TextGravity::RIGHT, true, average},
};

}  // namespace

const FigureWidgetSpec FPS_WIDGET = {gui::WidgetType::FPS, Area::FPS_STRIP, Area::FPS_GRAPH, FIGURES,
                                     std::size(FIGURES),   NOTES,           std::size(NOTES)};

}  // namespace scene
