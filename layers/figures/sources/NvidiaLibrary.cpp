#include "figures/sources/NvidiaLibrary.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <exception>
#include <initializer_list>
#include <thread>
#include <utility>
#include <vector>

#include "utils/Thread.h"

namespace sources {

namespace {

constexpr const char* FILE_NAME = "libnvidia-ml.so.1";

// Results of the library's functions.
constexpr int SUCCESS = 0;
constexpr int NOT_SUPPORTED = 3;
constexpr int NO_PERMISSION = 4;
constexpr int NOT_FOUND = 6;
constexpr int TOO_SMALL = 7;

constexpr int SENSOR_OF_GPU = 0;
constexpr int GRAPHICS_CLOCK = 0;
constexpr double WATTS_PER_UNIT = 1e-3;
constexpr unsigned int MOST_PERCENT = 100;
constexpr unsigned int MOST_ROWS = 1024;
constexpr unsigned long long UNKNOWN_BYTES = ~0ULL;

using Handle = void*;

struct Utilization {
    unsigned int gpu;
    unsigned int memory;
};
struct Memory {
    unsigned long long total;
    unsigned long long free;
    unsigned long long used;
};
struct ProcessSample {
    unsigned int process;
    unsigned long long time;
    unsigned int sm;
    unsigned int memory;
    unsigned int encoder;
    unsigned int decoder;
};
static_assert(sizeof(void*) != 8 || sizeof(ProcessSample) == 32, "the library's layout");

/// A row of the lists of processes; those of the oldest list end before `instances`.
struct ProcessRow {
    unsigned int process;
    unsigned long long bytes;
    unsigned int instances[2];
};
static_assert(sizeof(void*) != 8 || sizeof(ProcessRow) == 24, "the library's layout");
constexpr std::size_t OLD_ROW_SIZE = 16;
/// Some releases wrote larger rows than their headers said.
constexpr std::size_t LARGEST_ROW_SIZE = 40;

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

}  // namespace

struct NvidiaLibrary::Library {
    enum class State { LOADING, READY, FAILED };

    std::atomic<State> state{State::LOADING};  ///< release when READY, so that what follows is seen
    Reason failure = Reason::NO_FILE;
    Handle device = nullptr;

    int (*getUtilization)(Handle, Utilization*) = nullptr;
    int (*getProcessUtilization)(Handle, ProcessSample*, unsigned int*, unsigned long long) = nullptr;
    int (*getMemory)(Handle, Memory*) = nullptr;
    int (*getTemperature)(Handle, int, unsigned int*) = nullptr;
    int (*getClock)(Handle, int, unsigned int*) = nullptr;
    int (*getMaxClock)(Handle, int, unsigned int*) = nullptr;
    int (*getPower)(Handle, unsigned int*) = nullptr;
    int (*getFan)(Handle, unsigned int*) = nullptr;

    struct ProcessList {
        int (*get)(Handle, unsigned int*, void*) = nullptr;
        bool isOld = false;
    };
    ProcessList graphics;
    ProcessList compute;

    void load(const std::string& pciDevice, int number);
    Reason open(void* file, const std::string& pciDevice, int number);
    std::optional<unsigned long long> bytesOf(const ProcessList& list, pid_t process) const;
};

namespace {

template <typename Function>
void find(void* file, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(file, name));
}

}  // namespace

void NvidiaLibrary::Library::load(const std::string& pciDevice, int number) {
    void* const file = dlopen(FILE_NAME, RTLD_NOW | RTLD_LOCAL);
    failure = file == nullptr ? Reason::NO_FILE : open(file, pciDevice, number);
    state.store(failure == Reason::NONE ? State::READY : State::FAILED, std::memory_order_release);
}

Reason NvidiaLibrary::Library::open(void* file, const std::string& pciDevice, int number) {
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
    // By its place on the bus only that device is touched.
    int result = NOT_FOUND;
    if (!pciDevice.empty() && byBus != nullptr) {
        result = byBus(pciDevice.c_str(), &device);
    } else if (byIndex != nullptr) {
        result = byIndex(static_cast<unsigned int>(std::max(number, 0)), &device);
    }
    if (result != SUCCESS) {
        return reasonOfResult(result);
    }
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

std::optional<unsigned long long> NvidiaLibrary::Library::bytesOf(const ProcessList& list,
                                                                  pid_t process) const {
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

NvidiaLibrary::NvidiaLibrary(std::string pciDevice, int number)
    : mLibrary(std::make_shared<Library>()), mOwner(getpid()) {
    try {
        utils::startThread("kordanix-nvidia", [library = mLibrary, device = std::move(pciDevice), number] {
            try {
                library->load(device, number);
            } catch (const std::exception&) {
                library->state.store(Library::State::FAILED, std::memory_order_release);
            }
        }).detach();
    } catch (const std::exception&) {
        mLibrary->state.store(Library::State::FAILED, std::memory_order_release);
    }
}

NvidiaLibrary::~NvidiaLibrary() = default;

bool NvidiaLibrary::hasAnswered() {
    return mLibrary->state.load(std::memory_order_acquire) != Library::State::LOADING;
}

const NvidiaLibrary::Library* NvidiaLibrary::library(Value& otherwise) {
    const Library::State state = mLibrary->state.load(std::memory_order_acquire);
    if (getpid() != mOwner || state == Library::State::LOADING) {
        otherwise = Value::none(Reason::NOT_ANSWERING, FILE_NAME);
        return nullptr;
    }
    if (state == Library::State::FAILED) {
        otherwise = Value::none(mLibrary->failure, FILE_NAME);
        return nullptr;
    }
    return mLibrary.get();
}

namespace {

/// Calls a function that fills one object with what it knows.
template <typename Result, typename Function, typename Convert, typename... Arguments>
Value ask(Function function, const char* name, Convert convert, Arguments... arguments) {
    if (function == nullptr) {
        return Value::none(Reason::NOT_SUPPORTED, name);
    }
    Result result = {};
    const int error = function(arguments..., &result);
    return error == SUCCESS ? Value::of(convert(result), name) : Value::none(reasonOfResult(error), name);
}

double same(unsigned int number) {
    return number;
}

}  // namespace

Value NvidiaLibrary::load() {
    Value otherwise;
    const Library* const it = library(otherwise);
    return it == nullptr
               ? otherwise
               : ask<Utilization>(
                     it->getUtilization, "nvmlDeviceGetUtilizationRates",
                     [](const Utilization& use) { return double{std::min(use.gpu, MOST_PERCENT) * 1.0}; },
                     it->device);
}

/// The library's rows may be of other processes, from long ago, or nonsense: only a newer one of this process
/// with a percentage counts.
Value NvidiaLibrary::processLoad(pid_t process) {
    Value otherwise;
    const Library* const it = library(otherwise);
    const char* const name = "nvmlDeviceGetProcessUtilization";
    if (it == nullptr || it->getProcessUtilization == nullptr) {
        return it == nullptr ? otherwise : Value::none(Reason::NOT_SUPPORTED, name);
    }
    unsigned int count = 0;
    int result = it->getProcessUtilization(it->device, nullptr, &count, mLastSample);
    std::vector<ProcessSample> rows;
    if (result == TOO_SMALL || (result == SUCCESS && count > 0)) {
        rows.resize(std::min(count + 8, MOST_ROWS));
        count = static_cast<unsigned int>(rows.size());
        result = it->getProcessUtilization(it->device, rows.data(), &count, mLastSample);
        rows.resize(result == SUCCESS ? std::min<std::size_t>(count, rows.size()) : 0);
    }
    if (result == NOT_FOUND) {
        return mLastProcessLoad = Value::of(0.0, name);
    }
    if (result != SUCCESS) {
        return Value::none(reasonOfResult(result), name);
    }
    bool isFound = false;
    for (const ProcessSample& row : rows) {
        if (row.process == static_cast<unsigned int>(process) && row.sm <= MOST_PERCENT &&
            row.time > mLastSample) {
            mLastSample = row.time;
            mLastProcessLoad = Value::of(row.sm, name);
            isFound = true;
        }
    }
    return isFound || mLastProcessLoad ? mLastProcessLoad : Value::of(0.0, name);
}

Value NvidiaLibrary::clock() {
    Value otherwise;
    const Library* const it = library(otherwise);
    return it == nullptr
               ? otherwise
               : ask<unsigned int>(it->getClock, "nvmlDeviceGetClockInfo", same, it->device, GRAPHICS_CLOCK);
}

Value NvidiaLibrary::maxClock() {
    Value otherwise;
    const Library* const it = library(otherwise);
    return it == nullptr ? otherwise
                         : ask<unsigned int>(it->getMaxClock, "nvmlDeviceGetMaxClockInfo", same, it->device,
                                             GRAPHICS_CLOCK);
}

Value NvidiaLibrary::temperature() {
    Value otherwise;
    const Library* const it = library(otherwise);
    return it == nullptr ? otherwise
                         : ask<unsigned int>(it->getTemperature, "nvmlDeviceGetTemperature", same, it->device,
                                             SENSOR_OF_GPU);
}

Value NvidiaLibrary::memoryUsed() {
    Value otherwise;
    const Library* const it = library(otherwise);
    return it == nullptr
               ? otherwise
               : ask<Memory>(
                     it->getMemory, "nvmlDeviceGetMemoryInfo",
                     [](const Memory& memory) { return static_cast<double>(memory.used); }, it->device);
}

/// Devices that work in the machine's memory tell a total of 0.
Value NvidiaLibrary::memoryTotal() {
    Value otherwise;
    const Library* const it = library(otherwise);
    if (it == nullptr) {
        return otherwise;
    }
    const Value total = ask<Memory>(
        it->getMemory, "nvmlDeviceGetMemoryInfo",
        [](const Memory& memory) { return static_cast<double>(memory.total); }, it->device);
    return total && *total.number <= 0.0 ? Value::none(Reason::NOT_SUPPORTED, total.source) : total;
}

Value NvidiaLibrary::processMemory(pid_t process) {
    Value otherwise;
    const Library* const it = library(otherwise);
    if (it == nullptr) {
        return otherwise;
    }
    const auto graphics = it->bytesOf(it->graphics, process);
    const auto compute = it->bytesOf(it->compute, process);
    const char* const name = "nvmlDeviceGetGraphicsRunningProcesses";
    // A process may be in both lists, with the same memory.
    return graphics || compute
               ? Value::of(static_cast<double>(std::max(graphics.value_or(0), compute.value_or(0))), name)
               : Value::none(Reason::NOT_SUPPORTED, name);
}

Value NvidiaLibrary::power() {
    Value otherwise;
    const Library* const it = library(otherwise);
    return it == nullptr
               ? otherwise
               : ask<unsigned int>(
                     it->getPower, "nvmlDeviceGetPowerUsage",
                     [](unsigned int milliwatts) { return milliwatts * WATTS_PER_UNIT; }, it->device);
}

Value NvidiaLibrary::fan() {
    Value otherwise;
    const Library* const it = library(otherwise);
    Value value =
        it == nullptr ? otherwise : ask<unsigned int>(it->getFan, "nvmlDeviceGetFanSpeed", same, it->device);
    value.unit = "percent";
    return value;
}

}  // namespace sources
