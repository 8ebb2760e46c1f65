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

constexpr FigureRow FIGURES[] = {
    {settingsOf<&Memory::mPss>, "PSS", Area::MEMORY_NAME_1, Area::MEMORY_VALUE_1, Value::MEM_PSS,
     &Metrics::pss, formatBytes, &Metrics::processMemoryTop},
    {settingsOf<&Memory::mGpuTotal>, "GPU", Area::MEMORY_NAME_2, Area::MEMORY_VALUE_2, Value::MEM_GPU,
     &Metrics::gpuMemoryTotal, formatBytes, &Metrics::processMemoryTop},
    {settingsOf<&Memory::mGpuSurface>, "Surf", Area::MEMORY_NAME_3, Area::MEMORY_VALUE_3, Value::MEM_SURF,
     &Metrics::gpuMemorySurface, formatBytes, &Metrics::processMemoryTop},
    {settingsOf<&Memory::mGpuTexture>, "Tex", Area::MEMORY_NAME_4, Area::MEMORY_VALUE_4, Value::MEM_TEX,
     &Metrics::gpuMemoryTexture, formatBytes, &Metrics::processMemoryTop},
    {settingsOf<&Memory::mSysFree>, "SysFree", Area::MEMORY_NAME_5, Area::MEMORY_VALUE_5, Value::MEM_SYS_FREE,
     &Metrics::systemMemoryFree, formatBytes, &Metrics::systemMemoryTotal},
};

constexpr NoteRow NOTES[] = {
    {Area::MEMORY_LABEL, gui::TextGravity::LEFT, true, used},
};

}  // namespace

const FigureTable MEMORY_WIDGET = {
    gui::WidgetType::MEMORY, Area::MEMORY_STRIP, Area::MEMORY_GRAPH, FIGURES, std::size(FIGURES), NOTES,
    std::size(NOTES)};

}  // namespace scene
