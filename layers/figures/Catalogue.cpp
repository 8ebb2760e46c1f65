#include "figures/Catalogue.h"

#include <iterator>

namespace figures {

namespace {

using gui::WidgetType;

constexpr std::uint32_t BLUE = 0xFF0084FF;
constexpr std::uint32_t CYAN = 0xFF00E5FF;
constexpr std::uint32_t GREEN = 0xFF00FF00;
constexpr std::uint32_t ORANGE = 0xFFFF7200;
constexpr std::uint32_t RED = 0xFFFF0000;
constexpr std::uint32_t YELLOW = 0xFFFFFF00;

constexpr Figure::Settings NOTE = {};
constexpr Figure::Column NO_COLUMN = {};

using Value = gui::WidgetValueType;

constexpr Figure FIGURES[] = {
    {"fps.current",
     "current frame rate",
     "FPS",
     {"frames per second", "", Kind::RATE, 1},
     WidgetType::FPS,
     {"widget_fps_current", true, BLUE},
     {"Fps", Value::FPS},
     {Source::CURRENT_FPS, nullptr, nullptr}},
    {"fps.median",
     "median frame rate",
     "Med",
     {"frames per second", "", Kind::RATE, 1},
     WidgetType::FPS,
     {"widget_fps_median", true, ORANGE},
     NO_COLUMN,
     {Source::MEDIAN_FPS, nullptr, nullptr}},
    {"fps.stability",
     "frame-rate stability",
     "Stab",
     {"percent", "%", Kind::RATE, 0},
     WidgetType::FPS,
     {"widget_fps_stability", true, YELLOW},
     NO_COLUMN,
     {Source::FPS_STABILITY, nullptr, nullptr}},
    {"fps.low1",
     "frame rate over the slowest 1 %",
     "1%",
     {"frames per second", "", Kind::RATE, 1},
     WidgetType::FPS,
     {"widget_fps_low1", false, GREEN},
     NO_COLUMN,
     {Source::LOW_1_FPS, nullptr, nullptr}},
    {"fps.low01",
     "frame rate over the slowest 0.1 %",
     "0.1%",
     {"frames per second", "", Kind::RATE, 1},
     WidgetType::FPS,
     {"widget_fps_low01", false, RED},
     NO_COLUMN,
     {Source::LOW_01_FPS, nullptr, nullptr}},
    {"fps.average",
     "average frame rate",
     "Avg",
     {"frames per second", "", Kind::RATE, 1},
     WidgetType::FPS,
     NOTE,
     NO_COLUMN,
     {Source::AVERAGE_FPS, nullptr, nullptr}},
    {"cpu.load.process",
     "CPU load of the process",
     "CPU app",
     {"percent", "%", Kind::RATE, 0},
     WidgetType::CPU_GPU,
     {"widget_cpu_gpu_cpu_load", true, BLUE},
     {"CpuLoad(%)", Value::CPU_LOAD},
     {Source::CPU_LOAD, "/proc/self/stat", "the process's times as its 14th and 15th item"}},
    {"gpu.clock",
     "GPU frequency",
     "MHz",
     {"MHz", "", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     {"widget_cpu_gpu_gpu_freq", false, YELLOW},
     {"GpuFreq(MHz)", Value::GPU_FREQ},
     {Source::GPU_CLOCK, "/sys/kernel/gpu/gpu_clock", "a clock in the unit of the clock table"}},
    {"gpu.load.device",
     "GPU load",
     "GPU",
     {"percent", "%", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     {"widget_cpu_gpu_gpu_load", true, ORANGE},
     {"GpuLoad(%)", Value::GPU_LOAD},
     {Source::GPU_LOAD, "/sys/kernel/gpu/gpu_busy", "a number of percent"}},
    {"cpu.load.system",
     "CPU load of the whole machine",
     "CPU all",
     {"percent", "%", Kind::RATE, 0},
     WidgetType::CPU_GPU,
     {"widget_cpu_gpu_cpu_load_system", false, CYAN},
     NO_COLUMN,
     {Source::CPU_LOAD_SYSTEM, nullptr, nullptr}},
    {"cpu.load.core",
     "load of the busiest processor",
     "Core",
     {"percent", "%", Kind::RATE, 0},
     WidgetType::CPU_GPU,
     {"widget_cpu_gpu_cpu_load_core", false, GREEN},
     NO_COLUMN,
     {Source::CPU_LOAD_CORE, nullptr, nullptr}},
    {"cpu.clock",
     "CPU frequency of the fastest processor",
     "CPU MHz",
     {"MHz", "", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     {"widget_cpu_gpu_cpu_freq", false, CYAN},
     NO_COLUMN,
     {Source::CPU_CLOCK, nullptr, nullptr}},
    {"gpu.load.process",
     "GPU load of the process",
     "GPU app",
     {"percent", "%", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     {"widget_cpu_gpu_gpu_load_process", false, GREEN},
     NO_COLUMN,
     {Source::GPU_LOAD_PROCESS, nullptr, nullptr}},
    {"gpu.power",
     "power of the GPU",
     "Power",
     {"watts", "W", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     {"widget_cpu_gpu_gpu_power", false, YELLOW},
     NO_COLUMN,
     {Source::GPU_POWER, nullptr, nullptr}},
    {"gpu.fan",
     "fan of the GPU",
     "Fan",
     {"rpm", "rpm", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     {"widget_cpu_gpu_gpu_fan", false, CYAN},
     NO_COLUMN,
     {Source::GPU_FAN, nullptr, nullptr}},
    {"cpu.temperature",
     "CPU temperature",
     "CPU",
     {"celsius", "C", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     NOTE,
     NO_COLUMN,
     {Source::CPU_TEMPERATURE, "/sys/class/thermal/thermal_zone0/temp", "thousandths of a degree"}},
    {"gpu.temperature",
     "GPU temperature",
     "GPU",
     {"celsius", "C", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     NOTE,
     NO_COLUMN,
     {Source::GPU_TEMPERATURE, "/sys/kernel/gpu/gpu_tmu", "a number"}},
    {"gpu.clock.max",
     "highest GPU frequency",
     "Max",
     {"MHz", "MHz", Kind::NUMBER, 0},
     WidgetType::CPU_GPU,
     NOTE,
     NO_COLUMN,
     {Source::GPU_MAX_CLOCK, "/sys/kernel/gpu/gpu_freq_table", "clocks in kHz or MHz"}},
    {"memory.process",
     "proportional set size of the process",
     "PSS",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     {"widget_memory_pss", true, BLUE},
     {"MemPss(Bytes)", Value::MEM_PSS},
     {Source::PSS, "/proc/self/smaps_rollup", "a line Pss"}},
    {"gpu.memory.process",
     "GPU memory in total",
     "GPU",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     {"widget_memory_gpu_total", true, YELLOW},
     {"MemGpu(Bytes)", Value::MEM_GPU},
     {Source::GPU_MEMORY_TOTAL, "/sys/kernel/gpu/gpu_mem_total", "a number of bytes"}},
    {"gpu.memory.surfaces",
     "GPU memory of surfaces",
     "Surf",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     {"widget_memory_gpu_surface", true, ORANGE},
     {"MemSurf(Bytes)", Value::MEM_SURF},
     {Source::GPU_MEMORY_SURFACE, "/sys/kernel/gpu/gpu_mem_surface", "a number of bytes"}},
    {"gpu.memory.textures",
     "GPU memory of textures",
     "Tex",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     {"widget_memory_gpu_texture", true, RED},
     {"MemTex(Bytes)", Value::MEM_TEX},
     {Source::GPU_MEMORY_TEXTURE, "/sys/kernel/gpu/gpu_mem_texture", "a number of bytes"}},
    {"memory.free",
     "free memory of the system",
     "SysFree",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     {"widget_memory_sys_free", true, GREEN},
     {"MemSysFreeHeap(Bytes)", Value::MEM_SYS_FREE},
     {Source::SYSTEM_MEMORY_FREE, "/proc/meminfo", "a line MemAvailable"}},
    {"gpu.memory.device",
     "GPU memory of all processes",
     "GPU all",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     {"widget_memory_gpu_all", false, CYAN},
     NO_COLUMN,
     {Source::GPU_MEMORY_DEVICE, nullptr, nullptr}},
    {"gpu.memory.total",
     "GPU memory that there is",
     "GPU max",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     {"widget_memory_gpu_max", false, CYAN},
     NO_COLUMN,
     {Source::GPU_MEMORY_CAPACITY, nullptr, nullptr}},
    {"memory.used",
     "memory in use",
     "Used",
     {"bytes", "", Kind::MEMORY, 0},
     WidgetType::MEMORY,
     NOTE,
     NO_COLUMN,
     {Source::SYSTEM_MEMORY_USED, "/proc/meminfo", "lines MemTotal, MemFree and Cached"}},
};

static_assert(std::size(FIGURES) <= FigureSet().size());

}  // namespace

FigureRows catalogue() {
    return {FIGURES, std::size(FIGURES)};
}

std::uint32_t catalogueSignature() {
    // FNV-1a. The unit's order in the sum matters, and so does where a text ends.
    std::uint32_t sum = 2166136261U;
    for (const Figure& figure : FIGURES) {
        for (const char* text : {figure.id, figure.format.unit}) {
            do {
                sum = (sum ^ static_cast<unsigned char>(*text)) * 16777619U;
            } while (*text++ != '\0');
        }
    }
    return sum;
}

std::size_t indexOf(const Figure& figure) {
    return static_cast<std::size_t>(&figure - FIGURES);
}

}  // namespace figures
