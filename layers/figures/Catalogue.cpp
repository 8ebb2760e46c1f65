#include "figures/Catalogue.h"

#include "figures/Metrics.h"

#include <array>
#include <iterator>
#include <memory>
#include <string>

namespace figures {

namespace {

using Graph = gui::WidgetsSettings::Graph;
using Widgets = gui::WidgetsSettings::Widgets;
using gui::WidgetType;

constexpr std::uint32_t BLUE = 0xFF0084FF;
constexpr std::uint32_t GREEN = 0xFF00FF00;
constexpr std::uint32_t ORANGE = 0xFFFF7200;
constexpr std::uint32_t RED = 0xFFFF0000;
constexpr std::uint32_t YELLOW = 0xFFFFFF00;

constexpr Figure::Settings NOTE = {};
constexpr Figure::Column NO_COLUMN = {};

/// Of the library's own settings.
template <auto WIDGET, auto GRAPH>
const Graph& of() {
    return gui::WidgetsSettings::getWidgets().*WIDGET.*GRAPH;
}

using Fps = Widgets::Fps;
using CpuGpu = Widgets::CpuGpu;
using Memory = Widgets::Memory;
using Value = gui::WidgetValueType;

constexpr Figure FIGURES[] = {
    {"fps.current",
     "current frame rate",
     "FPS",
     {"frames per second", "", Kind::RATE, 1},
     WidgetType::FPS,
     {"widget_fps_current", true, BLUE, of<&Widgets::mFps, &Fps::mCurrent>},
     {"Fps", Value::FPS},
     {nullptr, nullptr, &Metrics::currentFps, &Metrics::maxFps}},
    {"fps.median",
     "median frame rate",
     "Med",
     {"frames per second", "", Kind::RATE, 1},
     WidgetType::FPS,
     {"widget_fps_median", true, ORANGE, of<&Widgets::mFps, &Fps::mMedian>},
     NO_COLUMN,
     {nullptr, nullptr, &Metrics::medianFps, nullptr}},
    {"fps.stability",
     "frame-rate stability",
     "Stab",
     {"percent", "%", Kind::RATE, 0},
     WidgetType::FPS,
     {"widget_fps_stability", true, YELLOW, of<&Widgets::mFps, &Fps::mStability>},
     NO_COLUMN,
     {nullptr, nullptr, &Metrics::fpsStability, nullptr}},
    {"fps.average",
     "average frame rate",
     "Avg",
     {"frames per second", "", Kind::RATE, 1},
     WidgetType::FPS,
     NOTE,
     NO_COLUMN,
     {nullptr, nullptr, &Metrics::averageFps, nullptr}},
    {"cpu.load.process",
     "CPU load",
     "CPU",
     {"percent", "%", Kind::RATE, 0},
     WidgetType::CPU_GPU,
     {"widget_cpu_gpu_cpu_load", true, BLUE, of<&Widgets::mCpuGpu, &CpuGpu::mCpuLoad>},
     {"CpuLoad(%)", Value::CPU_LOAD},
     {"/proc/self/stat", "the process's times as its 14th and 15th item", &Metrics::cpuLoad,
      &Metrics::percentTop}},
    {"gpu.clock",
     "GPU frequency",
     "MHz",
     {"MHz", "", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     {"widget_cpu_gpu_gpu_freq", false, YELLOW, of<&Widgets::mCpuGpu, &CpuGpu::mGpuFreq>},
     {"GpuFreq(MHz)", Value::GPU_FREQ},
     {"/sys/kernel/gpu/gpu_clock", "a clock in the unit of the clock table", &Metrics::gpuClock,
      &Metrics::gpuMaxClock}},
    {"gpu.load.device",
     "GPU load",
     "GPU",
     {"percent", "%", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     {"widget_cpu_gpu_gpu_load", true, ORANGE, of<&Widgets::mCpuGpu, &CpuGpu::mGpuLoad>},
     {"GpuLoad(%)", Value::GPU_LOAD},
     {"/sys/kernel/gpu/gpu_busy", "a number of percent", &Metrics::gpuLoad, &Metrics::percentTop}},
    {"cpu.temperature",
     "CPU temperature",
     "CPU",
     {"celsius", "C", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     NOTE,
     NO_COLUMN,
     {"/sys/class/thermal/thermal_zone0/temp", "thousandths of a degree", &Metrics::cpuTemperature, nullptr}},
    {"gpu.temperature",
     "GPU temperature",
     "GPU",
     {"celsius", "C", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     NOTE,
     NO_COLUMN,
     {"/sys/kernel/gpu/gpu_tmu", "a number", &Metrics::gpuTemperature, nullptr}},
    {"gpu.clock.max",
     "highest GPU frequency",
     "Max",
     {"MHz", "MHz", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     NOTE,
     NO_COLUMN,
     {"/sys/kernel/gpu/gpu_freq_table", "clocks in kHz or MHz", &Metrics::gpuMaxClock, nullptr}},
    {"memory.process",
     "proportional set size of the process",
     "PSS",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     {"widget_memory_pss", true, BLUE, of<&Widgets::mMemory, &Memory::mPss>},
     {"MemPss(Bytes)", Value::MEM_PSS},
     {"/proc/self/smaps_rollup", "a line Pss", &Metrics::pss, &Metrics::processMemoryTop}},
    {"gpu.memory.process",
     "GPU memory in total",
     "GPU",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     {"widget_memory_gpu_total", true, YELLOW, of<&Widgets::mMemory, &Memory::mGpuTotal>},
     {"MemGpu(Bytes)", Value::MEM_GPU},
     {"/sys/kernel/gpu/gpu_mem_total", "a number of bytes", &Metrics::gpuMemoryTotal,
      &Metrics::processMemoryTop}},
    {"gpu.memory.surfaces",
     "GPU memory of surfaces",
     "Surf",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     {"widget_memory_gpu_surface", true, ORANGE, of<&Widgets::mMemory, &Memory::mGpuSurface>},
     {"MemSurf(Bytes)", Value::MEM_SURF},
     {"/sys/kernel/gpu/gpu_mem_surface", "a number of bytes", &Metrics::gpuMemorySurface,
      &Metrics::processMemoryTop}},
    {"gpu.memory.textures",
     "GPU memory of textures",
     "Tex",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     {"widget_memory_gpu_texture", true, RED, of<&Widgets::mMemory, &Memory::mGpuTexture>},
     {"MemTex(Bytes)", Value::MEM_TEX},
     {"/sys/kernel/gpu/gpu_mem_texture", "a number of bytes", &Metrics::gpuMemoryTexture,
      &Metrics::processMemoryTop}},
    {"memory.free",
     "free memory of the system",
     "SysFree",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     {"widget_memory_sys_free", true, GREEN, of<&Widgets::mMemory, &Memory::mSysFree>},
     {"MemSysFreeHeap(Bytes)", Value::MEM_SYS_FREE},
     {"/proc/meminfo", "a line MemAvailable", &Metrics::systemMemoryFree, &Metrics::systemMemoryTotal}},
    {"memory.used",
     "memory in use",
     "Used",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     NOTE,
     NO_COLUMN,
     {"/proc/meminfo", "lines MemTotal, MemFree and Cached", &Metrics::systemMemoryUsed, nullptr}},
};

static_assert(std::size(FIGURES) <= FigureSet().size());

}  // namespace

FigureRows catalogue() {
    return {FIGURES, std::size(FIGURES)};
}

std::size_t indexOf(const Figure& figure) {
    return static_cast<std::size_t>(&figure - FIGURES);
}

const Graph& settingsOf(const Figure& figure) {
    if (figure.settings.ofLibrary != nullptr) {
        return figure.settings.ofLibrary();
    }
    // Never destroyed: a frame may still ask while the process exits.
    static auto& made = *new std::array<std::unique_ptr<Graph>, std::size(FIGURES)>;
    std::unique_ptr<Graph>& graph = made[indexOf(figure)];
    if (graph == nullptr) {
        graph = std::make_unique<Graph>(std::string("debug.kordanix.") + figure.settings.property,
                                        figure.settings.isOnByDefault, figure.settings.color);
    }
    return *graph;
}

}  // namespace figures
