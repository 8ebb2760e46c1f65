#include "figures/sources/NvidiaLibrary.h"

#include "figures/sources/NvidiaFunctions.h"
#include "utils/Thread.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <utility>
#include <vector>

namespace sources {

using nvidia::FILE_NAME;
using nvidia::Library;
using nvidia::Memory;
using nvidia::MOST_ROWS;
using nvidia::NOT_FOUND;
using nvidia::ProcessSample;
using nvidia::reasonOfResult;
using nvidia::SUCCESS;
using nvidia::TOO_SMALL;
using nvidia::Utilization;

namespace {

constexpr int SENSOR_OF_GPU = 0;
constexpr int GRAPHICS_CLOCK = 0;
constexpr double WATTS_PER_UNIT = 1e-3;
constexpr unsigned int MOST_PERCENT = 100;

}  // namespace

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

NvidiaLibrary::~NvidiaLibrary() {
    const bool isReady = mLibrary->state.load(std::memory_order_acquire) == Library::State::READY;
    if (isReady && getpid() == mOwner && mLibrary->shutDown != nullptr) {
        mLibrary->shutDown();
    }
}

bool NvidiaLibrary::hasAnswered() {
    return mLibrary->state.load(std::memory_order_acquire) != Library::State::LOADING;
}

const Library* NvidiaLibrary::library(Value& otherwise) {
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

/// Calls a function that fills one object, and converts the result.
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

/// The library's rows may belong to other processes, be old, or be nonsense. So only a newer row of this
/// process with a valid percentage counts.
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

/// Devices that use the machine's memory report a total of 0.
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
