// Every reader of kernel and driver files, with any bytes in the files.

// The target contains the library's readers, so that it can reset what they find out once per process.
#include "ByteReader.h"
#include "Check.h"
#include "core/SystemMetrics.cpp"
#include "doubles/FakeFiles.h"
#include "figures/KernelFiles.h"
#include "utils/SystemInfoHelper.cpp"

#include <cmath>
#include <cstdint>
#include <string>

namespace {

using core::StateInfo;

constexpr const char* PATHS[] = {
    "/proc/self/stat",
    "/proc/self/cmdline",
    "/proc/self/smaps_rollup",
    "/proc/meminfo",
    "/sys/class/thermal/thermal_zone0/temp",
    "/sys/devices/system/cpu/possible",
    "/sys/kernel/gpu/gpu_busy",
    "/sys/kernel/gpu/gpu_clock",
    "/sys/kernel/gpu/gpu_freq_table",
    "/sys/kernel/gpu/gpu_tmu",
    "/sys/kernel/gpu/gpu_model",
    "/sys/kernel/gpu/gpu_mem_total",
    "/sys/kernel/gpu/gpu_mem_surface",
    "/sys/kernel/gpu/gpu_mem_texture",
};

void checkReading(const figures::Reading& reading) {
    FUZZ_CHECK(!reading || (std::isfinite(*reading) && *reading >= 0.0));
}

/// Requires -1, or a figure of at least 0.
void checkFigure(float figure) {
    FUZZ_CHECK(std::isfinite(figure) && (figure == -1.0F || figure >= 0.0F));
}

void checkProcessName() {
    const std::string name = utils::getProcessName();
    FUZZ_CHECK(name.size() <= 255 && name.find('\0') == std::string::npos);
    std::string trimmed = name;
    utils::trim(trimmed);
    FUZZ_CHECK(trimmed == name);
}

/// `model` is the content of the driver's model file.
void checkVendor(const std::string& model) {
    std::string line = model.substr(0, std::min<std::size_t>(model.find('\n'), 49));
    line = line.c_str();
    for (char& symbol : line) {
        symbol = static_cast<char>(symbol >= 'a' && symbol <= 'z' ? symbol - 'a' + 'A' : symbol);
    }
    int expected = 2;
    if (line.find("MALI") != std::string::npos) {
        expected = 0;
    } else if (line.find("ADRENO") != std::string::npos) {
        expected = 1;
    }
    FUZZ_CHECK(utils::checkVendor() == expected);
    FUZZ_CHECK(utils::checkVendor() == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::ByteReader reader(data, size);
    core::sIsGpuClockUnitChecked = false;
    utils::sGpuVendorCache = 2;
    StateInfo::mMaxGpuClock = 0.0F;
    StateInfo::mIsGpuClockKHz = false;
    doubles::removeAllFiles();

    // Often all files have the same text, so that a text reaches its reader without luck.
    const bool isSameForAll = reader.flag();
    const double elapsed = reader.number();
    std::string model;
    if (isSameForAll) {
        model = reader.rest();
        for (const char* const path : PATHS) {
            doubles::setFile(path, model);
        }
    } else {
        while (!reader.isEmpty()) {
            const char* const path = PATHS[reader.upTo(std::size(PATHS) - 1)];
            const std::string text = reader.text(600);
            doubles::setFile(path, text);
            if (path == PATHS[10]) {
                model = text;
            }
        }
    }

    checkVendor(model);
    StateInfo state;
    FUZZ_CHECK(StateInfo::mVendor >= 0 && StateInfo::mVendor <= 2);
    checkFigure(StateInfo::getCPUTemperature());
    checkFigure(StateInfo::getGPUUsage());
    checkFigure(StateInfo::getGPUClock());
    checkFigure(StateInfo::getGPUMaxClock());
    FUZZ_CHECK(std::isfinite(StateInfo::getGPUTemperature()));
    FUZZ_CHECK(state.getCurrentCPUUsage(elapsed) == -1.0F);
    checkFigure(state.getCurrentCPUUsage(elapsed));
    static_cast<void>(StateInfo::getMemoryUsage());
    StateInfo::fixClock();
    checkProcessName();

    const figures::SystemMemory memory = figures::readSystemMemory();
    checkReading(memory.total);
    checkReading(memory.available);
    checkReading(figures::readProportionalSetSize());
    checkReading(figures::readGpuMemoryTotal());
    checkReading(figures::readGpuMemorySurface());
    checkReading(figures::readGpuMemoryTexture());
    checkReading(figures::readProcessorCount());
    FUZZ_CHECK(doubles::openFiles() == 0);
    return 0;
}
