#include "overlays/MetricChecks.h"

#include "core/StateInfo.h"
#include "figures/KernelFiles.h"
#include "utils/SystemInfoHelper.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <system_error>

namespace control {

namespace {

using core::StateInfo;

struct FileCloser {
    void operator()(std::FILE* file) const { StateInfo::file_close(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

constexpr const char* GPU_TABLE = "/sys/kernel/gpu/gpu_freq_table";

std::string formatted(const char* format, double figure) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, figure);
    return text.data();
}

/// A figure of the library's readers, which answer with a negative one when there is none.
std::string figureText(const char* format, float figure) {
    return figure >= 0.0F && std::isfinite(figure) ? formatted(format, static_cast<double>(figure))
                                                   : std::string();
}

std::string mebibytes(const figures::Reading& bytes) {
    return bytes ? formatted("%.1f MiB", *bytes / (1024.0 * 1024.0)) : std::string();
}

std::string cpuLoad() {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds PATIENCE(200);
    StateInfo state;
    // A load lies between two readings, and the times of a process as young as this one begin with no whole
    // tick, which the library takes for a first reading.
    const Clock::time_point end = Clock::now() + PATIENCE;
    do {
        if (state.getCurrentCPUUsage(1.0) >= 0.0F) {
            return "readable";
        }
    } while (Clock::now() < end);
    return {};
}

std::string cpuTemperature() {
    return figureText("%.1f degrees Celsius", StateInfo::getCPUTemperature());
}

std::string gpuModel() {
    static constexpr std::array<const char*, 3> VENDORS = {"Mali", "Adreno", ""};
    return VENDORS.at(static_cast<std::size_t>(utils::checkVendor()));
}

std::string gpuLoad() {
    return figureText("%.0f %%", StateInfo::getGPUUsage());
}

std::string gpuClockTable() {
    const float highest = StateInfo::getGPUMaxClock();
    return highest > 0.0F ? figureText("up to %.0f MHz", highest) +
                                (StateInfo::mIsGpuClockKHz ? ", counted in kHz" : ", counted in MHz")
                          : std::string();
}

std::string gpuClock() {
    return figureText("%.0f MHz", StateInfo::getGPUClock());
}

std::string gpuTemperature() {
    return figureText("%.1f degrees Celsius", StateInfo::getGPUTemperature());
}

std::string memoryInUse() {
    const std::uint32_t kibibytes = StateInfo::getMemoryUsage();
    return kibibytes == 0xFFFFFFFF ? std::string() : mebibytes(kibibytes * 1024.0);
}

std::string freeMemory() {
    return mebibytes(figures::readSystemMemory().available);
}

std::string processMemory() {
    return mebibytes(figures::readProportionalSetSize());
}

std::string gpuMemoryTotal() {
    return mebibytes(figures::readGpuMemoryTotal());
}

std::string gpuMemorySurface() {
    return mebibytes(figures::readGpuMemorySurface());
}

std::string gpuMemoryTexture() {
    return mebibytes(figures::readGpuMemoryTexture());
}

/// A figure: where it comes from, what it is at the moment, and what the file must hold.
struct Metric {
    std::string_view name;
    const char* path;
    std::string (*read)();
    std::string_view expected;
};

/// What others depend on comes first.
constexpr Metric METRICS[] = {
    {"CPU load", "/proc/self/stat", cpuLoad, "the process's times as its 14th and 15th item"},
    {"CPU temperature", "/sys/class/thermal/thermal_zone0/temp", cpuTemperature, "thousandths of a degree"},
    {"GPU model", "/sys/kernel/gpu/gpu_model", gpuModel, "a text with Mali or Adreno in it"},
    {"GPU load", "/sys/kernel/gpu/gpu_busy", gpuLoad, "a number of percent"},
    {"GPU clock table", GPU_TABLE, gpuClockTable, "clocks in kHz or MHz"},
    {"GPU clock", "/sys/kernel/gpu/gpu_clock", gpuClock, "a clock in the unit of the clock table"},
    {"GPU temperature", "/sys/kernel/gpu/gpu_tmu", gpuTemperature, "a number"},
    {"memory in use", "/proc/meminfo", memoryInUse, "MemTotal, MemFree and Cached in its first five lines"},
    {"free memory", "/proc/meminfo", freeMemory, "a line MemAvailable"},
    {"process memory", "/proc/self/smaps_rollup", processMemory, "a line Pss"},
    {"GPU memory", "/sys/kernel/gpu/gpu_mem_total", gpuMemoryTotal, "a number of bytes"},
    {"  of surfaces", "/sys/kernel/gpu/gpu_mem_surface", gpuMemorySurface, "a number of bytes"},
    {"  of textures", "/sys/kernel/gpu/gpu_mem_texture", gpuMemoryTexture, "a number of bytes"},
};

bool isBelow(std::string_view path, std::string_view folder) {
    return path.substr(0, folder.size()) == folder;
}

std::string adviceFor(std::string_view path, int error) {
    if (error == EACCES || error == EPERM) {
        return "This user may not read the file: run the application as one who may, or let root permit it "
               "(chmod a+r).";
    }
    if (error != ENOENT && error != ENOTDIR) {
        return "The file is there but cannot be opened; the kernel's log may say more.";
    }
    if (isBelow(path, "/sys/kernel/gpu/")) {
        return "This machine's kernel has no such GPU files. The overlay shows N/A; a simulated device has "
               "them all ('kordanix-demo --device NAME').";
    }
    if (isBelow(path, "/sys/class/thermal/")) {
        return "The kernel knows no thermal zone, which is usual in virtual machines. The overlay shows N/A.";
    }
    return "The kernel does not offer the file, or the file system it is in is not mounted. The overlay "
           "shows N/A.";
}

/// The beginning of a file in printable characters.
std::string beginningOf(std::FILE* file) {
    std::array<char, 24> bytes{};
    const std::size_t size = std::fread(bytes.data(), 1, bytes.size(), file);
    std::string text;
    for (std::size_t i = 0; i < size && bytes[i] != '\n'; ++i) {
        text += bytes[i] >= ' ' && bytes[i] <= '~' ? bytes[i] : '?';
    }
    return text;
}

MetricCheck check(const Metric& metric) {
    MetricCheck result = {metric.name, metric.path, {}, {}, {}};
    const File file(StateInfo::file_open(metric.path, "r"));
    if (!file) {
        const int error = errno;
        result.error = std::generic_category().message(error);
        result.advice = adviceFor(metric.path, error);
        return result;
    }
    result.value = metric.read();
    if (!result.value.empty()) {
        return result;
    }
    if (metric.read == gpuClock && !StateInfo::checkGPUClockUnit()) {
        result.error = "its unit is unknown";
        result.advice =
            std::string("Without ") + GPU_TABLE + " the clock's unit is not known; mend that first.";
        return result;
    }
    result.error = "begins with \"" + beginningOf(file.get()) + "\"";
    result.advice = "Expected " + std::string(metric.expected) +
                    "; this kernel or driver writes something else. The overlay shows N/A.";
    return result;
}

}  // namespace

std::vector<MetricCheck> checkMetrics() {
    std::vector<MetricCheck> checks;
    for (const Metric& metric : METRICS) {
        checks.push_back(check(metric));
    }
    return checks;
}

}  // namespace control
