#include "figures/sources/NvidiaFunctions.h"

#include <dlfcn.h>

#include <algorithm>
#include <vector>

namespace sources::nvidia {

namespace {

constexpr unsigned long long UNKNOWN_BYTES = ~0ULL;

/// A row of a list of processes; a row of the oldest list ends before `instances`.
struct ProcessRow {
    unsigned int process;
    unsigned long long bytes;
    unsigned int instances[2];
};
static_assert(sizeof(void*) != 8 || sizeof(ProcessRow) == 24, "the library's layout");
constexpr std::size_t OLD_ROW_SIZE = 16;
/// Some releases write larger rows than their headers say.
constexpr std::size_t LARGEST_ROW_SIZE = 40;

template <typename Function>
void find(void* file, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(file, name));
}

}  // namespace

Reason reasonOfResult(int result) {
    switch (result) {
        case SUCCESS:
            return Reason::NONE;
        case NO_PERMISSION:
            return Reason::NOT_ALLOWED;
        case NOT_SUPPORTED:
        default:
            return Reason::NOT_SUPPORTED;
    }
}

void Library::load(const std::string& pciDevice, int number) {
    void* const file = dlopen(FILE_NAME, RTLD_NOW | RTLD_LOCAL);
    failure = file == nullptr ? Reason::NO_FILE : open(file, pciDevice, number);
    state.store(failure == Reason::NONE ? State::READY : State::FAILED, std::memory_order_release);
}

Reason Library::open(void* file, const std::string& pciDevice, int number) {
    int (*init)() = nullptr;
    int (*byBus)(const char*, Handle*) = nullptr;
    int (*byIndex)(unsigned int, Handle*) = nullptr;
    find(file, "nvmlInit_v2", init);
    find(file, "nvmlDeviceGetHandleByPciBusId_v2", byBus);
    find(file, "nvmlDeviceGetHandleByIndex_v2", byIndex);
    if (init == nullptr) {
        return Reason::NOT_SUPPORTED;
    }
    const int started = init();
    if (started != SUCCESS) {
        return reasonOfResult(started);
    }
    // Finding it by its bus address touches no other device.
    int result = NOT_FOUND;
    if (!pciDevice.empty() && byBus != nullptr) {
        result = byBus(pciDevice.c_str(), &device);
    } else if (byIndex != nullptr) {
        result = byIndex(static_cast<unsigned int>(std::max(number, 0)), &device);
    }
    if (result != SUCCESS) {
        return reasonOfResult(result);
    }
    find(file, "nvmlShutdown", shutDown);
    find(file, "nvmlDeviceGetUtilizationRates", getUtilization);
    find(file, "nvmlDeviceGetProcessUtilization", getProcessUtilization);
    find(file, "nvmlDeviceGetMemoryInfo", getMemory);
    find(file, "nvmlDeviceGetTemperature", getTemperature);
    find(file, "nvmlDeviceGetClockInfo", getClock);
    find(file, "nvmlDeviceGetMaxClockInfo", getMaxClock);
    find(file, "nvmlDeviceGetPowerUsage", getPower);
    find(file, "nvmlDeviceGetFanSpeed", getFan);
    const auto findList = [&](const std::string& name, ProcessList& list) {
        for (const char* const version : {"_v3", "_v2", ""}) {
            if (list.get == nullptr) {
                find(file, (name + version).c_str(), list.get);
                list.isOld = *version == '\0';
            }
        }
    };
    findList("nvmlDeviceGetGraphicsRunningProcesses", graphics);
    findList("nvmlDeviceGetComputeRunningProcesses", compute);
    return Reason::NONE;
}

std::optional<unsigned long long> Library::bytesOf(const ProcessList& list, pid_t process) const {
    if (list.get == nullptr) {
        return std::nullopt;
    }
    unsigned int count = 0;
    int result = list.get(device, &count, nullptr);
    if (result != SUCCESS && result != TOO_SMALL) {
        return std::nullopt;
    }
    count = std::min(count + 8, MOST_ROWS);
    std::vector<unsigned char> rows(count * LARGEST_ROW_SIZE * 2);
    result = list.get(device, &count, rows.data());
    if (result != SUCCESS) {
        return std::nullopt;
    }
    const std::size_t size = list.isOld ? OLD_ROW_SIZE : sizeof(ProcessRow);
    for (std::size_t i = 0; i < std::min(count, MOST_ROWS) && (i + 1) * size <= rows.size(); ++i) {
        ProcessRow row = {};
        std::copy_n(rows.data() + i * size, OLD_ROW_SIZE, reinterpret_cast<unsigned char*>(&row));
        if (row.process == static_cast<unsigned int>(process) && row.bytes != UNKNOWN_BYTES) {
            return row.bytes;
        }
    }
    return std::nullopt;
}

}  // namespace sources::nvidia
