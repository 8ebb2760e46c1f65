#include "scene/CpuGpuWidget.h"

#include "scene/TextFormat.h"

namespace scene {

namespace {

using Area = gui::RenderAreaType;
using Value = gui::WidgetValueType;

using CpuGpu = gui::WidgetsSettings::Widgets::CpuGpu;

template <gui::WidgetsSettings::Graph CpuGpu::*GRAPH>
const gui::WidgetsSettings::Graph& settingsOf() {
    return gui::WidgetsSettings::getWidgets().mCpuGpu.*GRAPH;
}

std::string vendor(Metrics&) {
    switch (core::StateInfo::mVendor) {
        case 0:
            return "Mali";
        case 1:
            return "Adreno";
        default:
            return "";
    }
}

/// Whether the clocks are fixed; nothing while nobody asks for that.
std::string clocks() {
    switch (core::StateInfo::getFixClockState()) {
        case 1:
            return "  Fixed";
        case 2:
            return "  Not fixed";
        default:
            return "";
    }
}

std::string footer(Metrics& metrics) {
    return "CPU " + formatTemperature(metrics.cpuTemperature()) + "  GPU " +
           formatTemperature(metrics.gpuTemperature()) + "  Max " + formatMegahertz(metrics.gpuMaxClock()) +
           clocks();
}

constexpr FigureRow FIGURES[] = {
    {settingsOf<&CpuGpu::mCpuLoad>, "CPU", Area::CPU_GPU_NAME_1, Area::CPU_GPU_VALUE_1, Value::CPU_LOAD,
     &Metrics::cpuLoad, formatPercent, &Metrics::percentTop},
    {settingsOf<&CpuGpu::mGpuFreq>, "MHz", Area::CPU_GPU_NAME_2, Area::CPU_GPU_VALUE_2, Value::GPU_FREQ,
     &Metrics::gpuClock, formatWhole, &Metrics::gpuMaxClock},
    {settingsOf<&CpuGpu::mGpuLoad>, "GPU", Area::CPU_GPU_NAME_3, Area::CPU_GPU_VALUE_3, Value::GPU_LOAD,
     &Metrics::gpuLoad, formatPercent, &Metrics::percentTop},
};

constexpr NoteRow NOTES[] = {
    {Area::CPU_GPU_LABEL, gui::TextGravity::LEFT, false, vendor},
    {Area::CPU_GPU_FOOTER, gui::TextGravity::LEFT, true, footer},
};

}  // namespace

const FigureTable CPU_GPU_WIDGET = {
    gui::WidgetType::CPU_GPU, Area::CPU_GPU_STRIP, Area::CPU_GPU_GRAPH, FIGURES, std::size(FIGURES), NOTES,
    std::size(NOTES)};

}  // namespace scene
