#include "figures/sources/SystemFigures.h"

#include "figures/sources/KernelText.h"

#include <android/log.h>
#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <set>

namespace sources {

namespace {

constexpr double MHZ_PER_HZ = 1e-6;
constexpr double CELSIUS_PER_UNIT = 1e-3;
constexpr double MS_PER_SECOND = 1e3;

/// Of the drivers that let an application read them. By exact path: to list a
/// folder is forbidden, as a rule.
constexpr const char* LOAD = "/sys/class/kgsl/kgsl-3d0/gpu_busy_percentage";
constexpr const char* CLOCK = "/sys/class/kgsl/kgsl-3d0/gpuclk";
constexpr const char* MAX_CLOCK = "/sys/class/kgsl/kgsl-3d0/max_gpuclk";
constexpr const char* TEMPERATURE = "/sys/class/kgsl/kgsl-3d0/temp";

constexpr const char* HEADROOM = "ASystemHealth_getGpuHeadroom";
constexpr const char* THERMAL = "AThermal_getCurrentThermalStatus";

/// The functions of libandroid.so that a device has: the headroom's from API
/// level 36 on, the status's from 30.
struct Functions {
    int (*getGpuHeadroom)(const void* parameters, float* headroom) = nullptr;
    int (*getGpuHeadroomInterval)(std::int64_t* milliseconds) = nullptr;
    void* (*acquireThermalManager)() = nullptr;
    int (*getThermalStatus)(void* manager) = nullptr;

    Functions() {
        void* const library = dlopen("libandroid.so", RTLD_NOW | RTLD_LOCAL);
        if (library != nullptr) {
            find(library, HEADROOM, getGpuHeadroom);
            find(library, "ASystemHealth_getGpuHeadroomMinIntervalMillis", getGpuHeadroomInterval);
            find(library, "AThermal_acquireManager", acquireThermalManager);
            find(library, THERMAL, getThermalStatus);
        }
    }

private:
    template <typename Function>
    static void find(void* library, const char* name, Function& function) {
        function = reinterpret_cast<Function>(dlsym(library, name));
    }
};

const Functions& functions() {
    static const Functions& instance = *new Functions;  // never destroyed: threads run until the process ends
    return instance;
}

}  // namespace

Value SystemFigures::gpuLoad(double now) {
    Value value = readScaled(mTree, LOAD, 1.0);
    return value ? value : firstOf(headroomLoad(now), std::move(value));
}

/// What is not free. The system computes it seldom, and does not like to be
/// asked more often.
Value SystemFigures::headroomLoad(double now) {
    const Functions& system = functions();
    if (system.getGpuHeadroom == nullptr) {
        return Value::none(Reason::NOT_SUPPORTED, HEADROOM);
    }
    if (now < mHeadroomDue) {
        return mHeadroomLoad;
    }
    std::int64_t interval = 0;
    if (system.getGpuHeadroomInterval == nullptr || system.getGpuHeadroomInterval(&interval) != 0) {
        interval = 0;
    }
    mHeadroomDue = now + std::clamp(static_cast<double>(interval) / MS_PER_SECOND, 1.0, 60.0);
    float headroom = NAN;
    const int result = system.getGpuHeadroom(nullptr, &headroom);
    if (result != 0 || !std::isfinite(headroom)) {
        mHeadroomLoad =
            Value::none(result != 0 && result != EPIPE ? reasonOf(result) : Reason::NOT_ANSWERING, HEADROOM);
    } else {
        mHeadroomLoad = Value::of(std::clamp(PERCENT - double{headroom}, 0.0, PERCENT), HEADROOM);
    }
    return mHeadroomLoad;
}

Value SystemFigures::gpuClock() {
    return readScaled(mTree, CLOCK, MHZ_PER_HZ);
}

Value SystemFigures::gpuMaxClock() {
    return readScaled(mTree, MAX_CLOCK, MHZ_PER_HZ);
}

Value SystemFigures::gpuTemperature() {
    return readScaled(mTree, TEMPERATURE, CELSIUS_PER_UNIT);
}

Value SystemFigures::thermalStatus() {
    const Functions& system = functions();
    if (system.acquireThermalManager == nullptr || system.getThermalStatus == nullptr) {
        return Value::none(Reason::NOT_SUPPORTED, THERMAL);
    }
    // Kept for good: the connection is the process's, and cheap.
    mThermalManager = mThermalManager != nullptr ? mThermalManager : system.acquireThermalManager();
    const int status = mThermalManager != nullptr ? system.getThermalStatus(mThermalManager) : -1;
    return status >= 0 ? Value::of(status, THERMAL) : Value::none(Reason::NOT_ANSWERING, THERMAL);
}

void noteMissing(const char* figure, const Value& value) {
    static std::mutex& mutex = *new std::mutex;
    static std::set<const char*>& said = *new std::set<const char*>;
    const std::lock_guard<std::mutex> lock(mutex);
    if (said.insert(figure).second) {
        const bool hasSource = !value.source.empty();
        __android_log_print(ANDROID_LOG_INFO, "Kordanix", "The device does not tell %s: %s%s%s%s", figure,
                            describe(value.reason), hasSource ? " (" : "", value.source.c_str(),
                            hasSource ? ")" : "");
    }
}

}  // namespace sources
