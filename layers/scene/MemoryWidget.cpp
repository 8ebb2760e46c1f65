#include "scene/MemoryWidget.h"

#include "scene/TextFormat.h"

namespace scene {

namespace {

using Area = gui::RenderAreaType;
using Value = gui::WidgetValueType;

using Memory = gui::WidgetsSettings::Widgets::Memory;

template <gui::WidgetsSettings::Graph Memory::*GRAPH>
const gui::WidgetsSettings::Graph& settingsOf() {
    return gui::WidgetsSettings::getWidgets().mMemory.*GRAPH;
}

std::string used(Metrics& metrics) {
    return "Used " + formatBytes(metrics.systemMemoryUsed());
}

constexpr FigureSpec FIGURES[] = {
    {settingsOf<&Memory::mPss>, "PSS", Area::MEMORY_NAME_1, Area::MEMORY_VALUE_1, &Metrics::pss, formatBytes,
     Value::MEM_PSS, &Metrics::processMemoryTop},
    {settingsOf<&Memory::mGpuTotal>, "GPU", Area::MEMORY_NAME_2, Area::MEMORY_VALUE_2,
     &Metrics::gpuMemoryTotal, formatBytes, Value::MEM_GPU, &Metrics::processMemoryTop},
    {settingsOf<&Memory::mGpuSurface>, "Surf", Area::MEMORY_NAME_3, Area::MEMORY_VALUE_3,
     &Metrics::gpuMemorySurface, formatBytes, Value::MEM_SURF, &Metrics::processMemoryTop},
    {settingsOf<&Memory::mGpuTexture>, "Tex", Area::MEMORY_NAME_4, Area::MEMORY_VALUE_4,
     &Metrics::gpuMemoryTexture, formatBytes, Value::MEM_TEX, &Metrics::processMemoryTop},
    {settingsOf<&Memory::mSysFree>, "SysFree", Area::MEMORY_NAME_5, Area::MEMORY_VALUE_5,
     &Metrics::systemMemoryFree, formatBytes, Value::MEM_SYS_FREE, &Metrics::systemMemoryTotal},
};

constexpr NoteSpec NOTES[] = {
    {Area::MEMORY_LABEL, gui::TextGravity::LEFT, true, used},
};

}  // namespace

const FigureWidgetSpec MEMORY_WIDGET = {
    gui::WidgetType::MEMORY, Area::MEMORY_STRIP, Area::MEMORY_GRAPH, FIGURES, std::size(FIGURES), NOTES,
    std::size(NOTES)};

}  // namespace scene
