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

constexpr FigureRow FIGURES[] = {
    {settingsOf<&Fps::mCurrent>, "FPS", NO_NAME_CELL, Area::FPS_TEXT_1, Value::FPS, &Metrics::currentFps,
     formatRate, &Metrics::maxFps},
    {settingsOf<&Fps::mMedian>, "Med", NO_NAME_CELL, Area::FPS_TEXT_2, Value::NONE, &Metrics::medianFps,
     formatRate, nullptr},
    {settingsOf<&Fps::mStability>, "Stab", NO_NAME_CELL, Area::FPS_TEXT_3, Value::NONE,
     &Metrics::fpsStability, formatPercent, nullptr},
};

constexpr NoteRow NOTES[] = {
    {Area::FPS_NOTE, gui::TextGravity::RIGHT, true, average},
};

}  // namespace

const FigureTable FPS_WIDGET = {gui::WidgetType::FPS, Area::FPS_STRIP, Area::FPS_GRAPH, FIGURES,
                                std::size(FIGURES),   NOTES,           std::size(NOTES)};

}  // namespace scene
