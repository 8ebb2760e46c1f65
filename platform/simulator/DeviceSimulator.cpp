#include "simulator/DeviceSimulator.h"

#include "simulator/ActiveDevice.h"
#include "simulator/SimulatedGpu.h"

#include <android/log.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>

namespace simulator {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr double RUNNING = -1.0;
constexpr double SAMPLE_SECONDS = 0.0005;
constexpr double MS_PER_SECOND = 1000.0;

// Any thread sets and reads them. Relaxed order, since they publish no other data.
std::atomic<double> gStoppedTime{RUNNING};
std::atomic<double> gCaptureStart{0.0};
std::atomic<double> gCaptureDelay{0.0};
std::atomic<std::uint32_t> gCaptureSamples{0};

struct Choice {
    Device device;
    bool isActive = false;
    std::string error;
    Clock::time_point start = Clock::now();
};

/// Finds the folder by the program's own path: the installed one or, in a build folder, the one in the
/// sources.
const fs::path& devicesFolder() {
    static const auto* const folder = [] {
        std::error_code failure;
        const fs::path program = fs::read_symlink("/proc/self/exe", failure).parent_path();
        const fs::path installed = program / KORDANIX_INSTALLED_DEVICES;
        return new fs::path(fs::is_directory(installed, failure) ? installed
                                                                 : program / KORDANIX_SOURCE_DEVICES);
    }();
    return *folder;
}

std::string folderOf(const std::string& choice) {
    const bool isPath = choice.find('/') != std::string::npos;
    return isPath ? choice : (devicesFolder() / choice).string();
}

Choice* makeChoice() {
    auto* const choice = new Choice;
    const char* const name = std::getenv("KORDANIX_DEVICE");  // NOLINT(concurrency-mt-unsafe)
    if (name == nullptr || *name == '\0') {
        return choice;
    }
    const std::string folder = folderOf(name);
    choice->error = choice->device.load(folder);
    choice->isActive = choice->error.empty();
    if (!fs::is_directory(folder)) {
        choice->error = std::string("there is no device \"") + name + '"';
    }
    if (!choice->isActive) {
        __android_log_print(ANDROID_LOG_ERROR, "Simulator", "%s", choice->error.c_str());
    }
    return choice;
}

/// Never destroyed: the library's threads may still read files while the process exits.
Choice& choice() {
    static Choice* const instance = makeChoice();
    return *instance;
}

}  // namespace

const Device* activeDevice() {
    return choice().isActive ? &choice().device : nullptr;
}

bool isActive() {
    return choice().isActive;
}

const std::string& deviceError() {
    return choice().error;
}

std::vector<std::string> deviceNames() {
    std::vector<std::string> names;
    std::error_code failure;
    for (fs::directory_iterator entry(devicesFolder(), failure), end; !failure && entry != end;
         entry.increment(failure)) {
        if (entry->is_directory()) {
            names.push_back(entry->path().filename().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

double now() {
    const double stopped = gStoppedTime.load(std::memory_order_relaxed);
    return stopped >= 0.0 ? stopped : std::chrono::duration<double>(Clock::now() - choice().start).count();
}

void setTime(double seconds) {
    gStoppedTime.store(seconds > 0.0 && std::isfinite(seconds) ? seconds : 0.0, std::memory_order_relaxed);
}

void useWallClock() {
    gStoppedTime.store(RUNNING, std::memory_order_relaxed);
}

std::optional<double> figureAt(const std::string& name, double seconds) {
    const Device* const device = activeDevice();
    if (device == nullptr || !device->script().hasFigure(name)) {
        return {};
    }
    return device->script().figureAt(name, seconds);
}

std::optional<ScriptedFrame> frameAt(double seconds) {
    const Device* const device = activeDevice();
    return device != nullptr ? device->script().frameAt(seconds) : std::nullopt;
}

namespace {

/// Begins a capture at the start of the current frame, and returns that time on the device's clock.
double beginCapture(double seconds) {
    const std::optional<ScriptedFrame> frame = frameAt(seconds);
    const double start = frame ? frame->startMs / MS_PER_SECOND : seconds;
    gCaptureStart.store(start, std::memory_order_relaxed);
    gCaptureDelay.store(seconds - start, std::memory_order_relaxed);
    gCaptureSamples.store(0, std::memory_order_relaxed);
    return start;
}

double sampleTime() {
    if (gStoppedTime.load(std::memory_order_relaxed) < 0.0) {
        return now() - gCaptureDelay.load(std::memory_order_relaxed);
    }
    // Counted from the capture's start, because the demo may already have set the time to the next frame.
    const std::uint32_t index = gCaptureSamples.fetch_add(1, std::memory_order_relaxed) + 1;
    return gCaptureStart.load(std::memory_order_relaxed) + index * SAMPLE_SECONDS;
}

}  // namespace

}  // namespace simulator

bool kordanixSimulatedGpu(KordanixSimulatedMoment moment, KordanixSimulatedGpu* sample) {
    const simulator::Device* const device = simulator::activeDevice();
    if (device == nullptr || !device->script().counters) {
        return false;
    }
    double seconds = simulator::now();
    if (moment == KORDANIX_SIMULATED_CAPTURE) {
        seconds = simulator::beginCapture(seconds);
    } else if (moment == KORDANIX_SIMULATED_SAMPLE) {
        seconds = simulator::sampleTime();
    }
    const simulator::Script& script = device->script();
    sample->seconds = seconds;
    sample->usage = script.figureAt(script.counters->usage, seconds);
    sample->vertexActivity = script.figureAt(script.counters->vertexActivity, seconds);
    sample->fragmentActivity = script.figureAt(script.counters->fragmentActivity, seconds);
    return true;
}
