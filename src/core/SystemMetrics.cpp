#include "core/StateInfo.h"
#include "utils/File.h"
#include "utils/PlainNumbers.h"
#include "utils/SystemInfoHelper.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <optional>

namespace core {

namespace {

using utils::File;

constexpr float UNREADABLE = -1.0F;
constexpr std::uint32_t UNREADABLE_MEMORY = 0xFFFFFFFF;

/// No GPU runs at 10 GHz, so a clock above this many MHz must be in kHz.
constexpr std::uint32_t MAX_CLOCK_IN_MHZ = 10000;

// Whether the frequency table has been read; set after the figures from it.
std::atomic<bool> sIsGpuClockUnitChecked{false};

/// Reads the low 32 bits of the file's next number. (A number beyond size_t saturates: the platforms' scanf
/// functions convert like strtoull.)
std::optional<std::uint32_t> readNumber(std::FILE* file) {
    std::size_t number = 0;
    if (std::fscanf(file, "%zu ", &number) != 1) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(number);
}

/// Reads the first number of the file.
std::optional<std::uint32_t> readNumber(const char* path) {
    const File file(path);
    return file ? readNumber(file.get()) : std::nullopt;
}

}  // namespace

float StateInfo::getCPUTemperature() {
    const auto milliDegrees = readNumber("/sys/class/thermal/thermal_zone0/temp");
    return milliDegrees ? static_cast<float>(*milliDegrees * 0.001) : UNREADABLE;
}

float StateInfo::getGPUUsage() {
    const auto usage = readNumber("/sys/kernel/gpu/gpu_busy");
    return usage ? static_cast<float>(*usage) : UNREADABLE;
}

float StateInfo::getGPUClock() {
    if (!checkGPUClockUnit()) {
        return UNREADABLE;
    }
    const auto clock = readNumber("/sys/kernel/gpu/gpu_clock");
    if (!clock) {
        return UNREADABLE;
    }
    return static_cast<float>(mIsGpuClockKHz ? *clock / 1000.0 : *clock);
}

float StateInfo::getGPUMaxClock() {
    return checkGPUClockUnit() ? mMaxGpuClock : UNREADABLE;
}

bool StateInfo::checkGPUClockUnit() {
    if (sIsGpuClockUnitChecked.load(std::memory_order_acquire)) {
        return true;
    }
    const File table("/sys/kernel/gpu/gpu_freq_table");
    if (!table) {
        return false;
    }
    std::uint32_t largest = 0;
    while (const auto clock = readNumber(table.get())) {
        largest = std::max(largest, *clock);
    }
    if (largest > MAX_CLOCK_IN_MHZ) {
        mMaxGpuClock = static_cast<float>(largest / 1000.0);
        mIsGpuClockKHz = true;
    } else {
        mMaxGpuClock = static_cast<float>(largest);
    }
    sIsGpuClockUnitChecked.store(true, std::memory_order_release);
    return true;
}

float StateInfo::getGPUTemperature() {
    const File file("/sys/kernel/gpu/gpu_tmu");
    const utils::PlainNumbers plain;
    float value = 0.0F;
    if (!file || std::fscanf(file.get(), "%f ", &value) != 1 || !std::isfinite(value)) {
        return UNREADABLE;
    }
    return mVendor == utils::Vendor::ADRENO ? static_cast<float>(value * 0.1) : value;
}

float StateInfo::getCurrentCPUUsage(double elapsed) {
    const File file("/proc/self/stat");
    std::size_t userTime = 0;
    std::size_t systemTime = 0;
    // Fields 14 and 15. Before them come the process id, the command and the state (texts), and ten more
    // numbers.
    if (!file ||
        std::fscanf(file.get(), "%*u  %*19s %*9s  %*u  %*u  %*u  %*u  %*u  %*u  %*u  %*u %*u %*u %zu %zu",
                    &userTime, &systemTime) != 2) {
        return UNREADABLE;
    }
    const auto user = static_cast<std::uint32_t>(userTime);
    const auto system = static_cast<std::uint32_t>(systemTime);
    const bool isFirst = mPrevCpuUserTicks == 0 && mPrevCpuSystemTicks == 0;
    const std::uint32_t ticks = (user - mPrevCpuUserTicks) + (system - mPrevCpuSystemTicks);
    mPrevCpuUserTicks = user;
    mPrevCpuSystemTicks = system;
    if (isFirst) {
        return UNREADABLE;
    }
    if (!(elapsed > 0.0)) {
        return 0.0F;
    }
    return static_cast<float>(
        std::min<double>(ticks * 100000.0 / elapsed, std::numeric_limits<float>::max()));
}

std::uint32_t StateInfo::getMemoryUsage() {
    enum { TOTAL, FREE, AVAILABLE, BUFFERS, CACHED, LINE_COUNT };

    const File file("/proc/meminfo");
    if (!file) {
        return UNREADABLE_MEMORY;
    }
    std::size_t kiB[LINE_COUNT] = {};
    for (std::size_t& number : kiB) {
        if (std::fscanf(file.get(), "%*14s %zu %*4s", &number) != 1) {
            return UNREADABLE_MEMORY;
        }
    }
    return static_cast<std::uint32_t>(kiB[TOTAL] - kiB[FREE] - kiB[CACHED]);
}

std::FILE* StateInfo::file_open(const char* path, const char* mode) {
    return std::fopen(path, mode);
}

std::size_t StateInfo::file_read(std::FILE* file, unsigned char* buffer, unsigned int size) {
    return std::fread(buffer, 1, size, file);
}

int StateInfo::file_close(std::FILE* file) {
    return std::fclose(file);
}

}  // namespace core
