#include "figures/FigureSettings.h"

#include "figures/Catalogue.h"

#include <array>
#include <map>
#include <string>
#include <string_view>

namespace figures {

namespace {

using Graph = gui::WidgetsSettings::Graph;
using Widgets = gui::WidgetsSettings::Widgets;
using Fps = Widgets::Fps;
using CpuGpu = Widgets::CpuGpu;
using Memory = Widgets::Memory;

template <auto WIDGET, auto GRAPH>
const Graph& of() {
    return gui::WidgetsSettings::getWidgets().*WIDGET.*GRAPH;
}

const Graph* findInLibrary(std::string_view property) {
    static constexpr struct {
        std::string_view property;
        const Graph& (*graph)();
    } GRAPHS[] = {
        {"widget_fps_current", of<&Widgets::mFps, &Fps::mCurrent>},
        {"widget_fps_median", of<&Widgets::mFps, &Fps::mMedian>},
        {"widget_fps_stability", of<&Widgets::mFps, &Fps::mStability>},
        {"widget_cpu_gpu_cpu_load", of<&Widgets::mCpuGpu, &CpuGpu::mCpuLoad>},
        {"widget_cpu_gpu_gpu_freq", of<&Widgets::mCpuGpu, &CpuGpu::mGpuFreq>},
        {"widget_cpu_gpu_gpu_load", of<&Widgets::mCpuGpu, &CpuGpu::mGpuLoad>},
        {"widget_memory_pss", of<&Widgets::mMemory, &Memory::mPss>},
        {"widget_memory_gpu_total", of<&Widgets::mMemory, &Memory::mGpuTotal>},
        {"widget_memory_gpu_surface", of<&Widgets::mMemory, &Memory::mGpuSurface>},
        {"widget_memory_gpu_texture", of<&Widgets::mMemory, &Memory::mGpuTexture>},
        {"widget_memory_sys_free", of<&Widgets::mMemory, &Memory::mSysFree>},
    };
    for (const auto& row : GRAPHS) {
        if (row.property == property) {
            return &row.graph();
        }
    }
    return nullptr;
}

}  // namespace

const Graph& settingsOf(const Figure& figure) {
    // Never destroyed: a thread may still draw a frame while the process exits.
    static auto& known = *new std::array<const Graph*, FigureSet().size()>{};
    const Graph*& graph = known[indexOf(figure)];
    if (graph == nullptr) {
        graph = findInLibrary(figure.settings.property);
    }
    if (graph == nullptr) {
        graph = new Graph(std::string("debug.kordanix.") + figure.settings.property,
                          figure.settings.isOnByDefault, figure.settings.color);
    }
    return *graph;
}

bool isSetByHand(const std::string& property) {
    // Never destroyed, as above; the library's own views of a property do not tell a default from a text.
    static auto& known = *new std::map<std::string, const SysProp<std::string>*>;
    const SysProp<std::string>*& text = known[property];
    if (text == nullptr) {
        text = &SysPropWatcher::createSysProp<std::string>(property, {});
    }
    return !text->getValue().empty();
}

bool isOfLibrary(const Figure& figure) {
    return findInLibrary(figure.settings.property) != nullptr;
}

}  // namespace figures
