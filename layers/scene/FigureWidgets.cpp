#include "scene/FigureWidgets.h"

#include "core/StateInfo.h"
#include "figures/Catalogue.h"
#include "figures/Metrics.h"
#include "figures/TextFormat.h"
#include "utils/SystemInfoHelper.h"

#include <iterator>

namespace scene {

namespace {

using Area = gui::RenderAreaType;
using figures::Metrics;
using gui::WidgetType;
using Widgets = gui::WidgetsSettings::Widgets;

template <auto WIDGET>
const SysProp<bool>& switchOf() {
    return (gui::WidgetsSettings::getWidgets().*WIDGET).mWidget;
}

/// Joins the catalogue's notes that have a value in one line.
template <WidgetType TYPE>
std::string notesOf(const Metrics& metrics) {
    std::string text;
    for (const figures::Figure& figure : figures::catalogue()) {
        if (figure.widget == TYPE && figure.isNote() && metrics.reading(figure)) {
            text += text.empty() ? "" : "  ";
            text += figure.label;
            text += ' ' + figures::format(figure, metrics.reading(figure));
        }
    }
    return text;
}

std::string vendor(const Metrics& /*metrics*/) {
    switch (core::StateInfo::mVendor) {
        case utils::Vendor::MALI:
            return "Mali";
        case utils::Vendor::ADRENO:
            return "Adreno";
        default:
            return "";
    }
}

/// The GPU's name where there are several, the notes, and whether the clocks are fixed if somebody has asked
/// for that.
std::string footer(const Metrics& metrics) {
    static constexpr const char* CLOCKS[] = {"", "  Fixed", "  Not fixed"};
    const char* const gpu = metrics.gpuName();
    std::string notes = notesOf<WidgetType::CPU_GPU>(metrics);
    return gpu + std::string(*gpu == '\0' || notes.empty() ? "" : "  ") + notes +
           CLOCKS[core::StateInfo::getFixClockState()];
}

constexpr FigureCell FPS_CELLS[] = {{{}, Area::FPS_TEXT_1}, {{}, Area::FPS_TEXT_2}, {{}, Area::FPS_TEXT_3}};

constexpr NoteRow FPS_NOTES[] = {{Area::FPS_NOTE, gui::TextGravity::RIGHT, true, notesOf<WidgetType::FPS>}};

constexpr FigureCell CPU_GPU_CELLS[] = {{Area::CPU_GPU_NAME_1, Area::CPU_GPU_VALUE_1},
                                        {Area::CPU_GPU_NAME_2, Area::CPU_GPU_VALUE_2},
                                        {Area::CPU_GPU_NAME_3, Area::CPU_GPU_VALUE_3}};

constexpr NoteRow CPU_GPU_NOTES[] = {{Area::CPU_GPU_LABEL, gui::TextGravity::LEFT, false, vendor},
                                     {Area::CPU_GPU_FOOTER, gui::TextGravity::LEFT, true, footer}};

constexpr FigureCell MEMORY_CELLS[] = {{Area::MEMORY_NAME_1, Area::MEMORY_VALUE_1},
                                       {Area::MEMORY_NAME_2, Area::MEMORY_VALUE_2},
                                       {Area::MEMORY_NAME_3, Area::MEMORY_VALUE_3},
                                       {Area::MEMORY_NAME_4, Area::MEMORY_VALUE_4},
                                       {Area::MEMORY_NAME_5, Area::MEMORY_VALUE_5}};

constexpr NoteRow MEMORY_NOTES[] = {
    {Area::MEMORY_LABEL, gui::TextGravity::LEFT, true, notesOf<WidgetType::MEMORY>}};

constexpr float NO_LABEL = 6.0F;
constexpr float VENDOR_LABEL = 35.0F;

}  // namespace

const FigureWidgetLayout FPS_WIDGET = {
    WidgetType::FPS,     switchOf<&Widgets::mFps>, Area::FPS_STRIP, Area::FPS_GRAPH,
    FPS_CELLS,           std::size(FPS_CELLS),     NO_LABEL,        FPS_NOTES,
    std::size(FPS_NOTES)};

const FigureWidgetLayout CPU_GPU_WIDGET = {
    // Whose load it is does not fit into a cell, so that they all share the strip.
    WidgetType::CPU_GPU,
    switchOf<&Widgets::mCpuGpu>,
    Area::CPU_GPU_STRIP,
    Area::CPU_GPU_GRAPH,
    CPU_GPU_CELLS,
    0,
    VENDOR_LABEL,
    CPU_GPU_NOTES,
    std::size(CPU_GPU_NOTES)};

const FigureWidgetLayout MEMORY_WIDGET = {
    WidgetType::MEMORY,     switchOf<&Widgets::mMemory>, Area::MEMORY_STRIP, Area::MEMORY_GRAPH,
    MEMORY_CELLS,           std::size(MEMORY_CELLS),     NO_LABEL,           MEMORY_NOTES,
    std::size(MEMORY_NOTES)};

}  // namespace scene
