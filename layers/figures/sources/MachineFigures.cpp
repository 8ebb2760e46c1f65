#include "figures/sources/MachineFigures.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace sources {

namespace {

struct Row {
    const char* name;
    const char* unit;
    double period = 1.0;  ///< seconds between two readings, at least, for whoever is sparing
};

constexpr std::array<Row, FIGURES> ROWS = {{
    {"cpu.load.process", "percent", 0.0},
    {"cpu.load.system", "percent", 0.0},
    {"cpu.load.core", "percent", 0.0},
    {"cpu.clock", "MHz"},
    {"cpu.temperature", "celsius"},
    {"gpu.load.process", "percent", 0.0},
    {"gpu.load.device", "percent", 0.0},
    {"gpu.clock", "MHz", 0.0},
    {"gpu.clock.max", "MHz", 30.0},
    {"gpu.temperature", "celsius"},
    {"gpu.memory.process", "bytes", 2.0},
    {"gpu.memory.device", "bytes"},
    {"gpu.memory.total", "bytes", 10.0},
    {"gpu.power", "watts"},
    {"gpu.fan", "rpm", 4.0},
    {"memory.process", "bytes"},
    {"memory.used", "bytes"},
    {"memory.free", "bytes"},
    {"thermal.status", "level", 2.0},
}};

constexpr const char* NVIDIA = "nvidia";

// Seconds.
constexpr double LONG_READING = 0.005;
constexpr double PERIOD_OF_SLOW = 2.0;
constexpr double PERIOD_OF_UNREADABLE = 5.0;
constexpr double PERIOD_OF_LOOKING = 10.0;
constexpr double PERIOD_OF_LOOKING_IN_VAIN = 2.0;
/// Readings come at about the time they are due.
constexpr double TOLERANCE = 0.1;

double secondsSinceStart() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Whether there is no hope for the next moments.
bool isUnreadable(Reason reason) {
    return reason == Reason::NO_FILE || reason == Reason::NOT_ALLOWED || reason == Reason::NOT_SUPPORTED ||
           reason == Reason::SWITCHED_OFF;
}

std::string processFolder(const FileTree& tree, pid_t process) {
    if (process == 0) {
        return {};
    }
    const bool isOther = tree.isLive() && process != getpid();
    return isOther ? "/proc/" + std::to_string(process) : "/proc/self";
}

}  // namespace

const char* nameOf(Id id) {
    return ROWS[static_cast<std::size_t>(id)].name;
}

const char* unitOf(Id id) {
    return ROWS[static_cast<std::size_t>(id)].unit;
}

MachineFigures::MachineFigures(const FileTree& tree, pid_t process)
    : mTree(tree), mProcess(process), mCpu(tree, processFolder(tree, process)), mFiles(tree), mSystem(tree) {
    if (process != 0) {
        mClients.emplace(tree, processFolder(tree, process));
    }
}

const char* MachineFigures::unit(Id id) const {
    const char* const own = value(id).unit;
    return own != nullptr ? own : unitOf(id);
}

bool MachineFigures::isAnswerPending() {
    return mNvidia != nullptr && !mNvidia->hasAnswered();
}

void MachineFigures::read(double now, const Wanted& wanted) {
    readCpu(now, wanted);
    bool isGpuWanted = false;
    for (std::size_t i = static_cast<std::size_t>(Id::GPU_LOAD_PROCESS);
         i <= static_cast<std::size_t>(Id::GPU_FAN); ++i) {
        isGpuWanted = isGpuWanted || wanted.test(i);
    }
    if (!isGpuWanted) {
        return;
    }
    lookForDevice(now);
    if (mGpu.driver == NVIDIA && isAsleep(mTree, mGpu)) {
        for (auto i = static_cast<std::size_t>(Id::GPU_LOAD_PROCESS);
             i <= static_cast<std::size_t>(Id::GPU_FAN); ++i) {
            mValues[i] = Value::none(Reason::ASLEEP, mGpu.folder + "/power/runtime_status");
        }
    } else if (hasNvidiaLibrary()) {
        readNvidia(now, wanted);
    } else {
        readGpu(now, wanted);
    }
}

template <typename Read>
void MachineFigures::pace(Pace& pace, double period, double now, const Read& read) {
    if (!mIsSparing) {
        read();
        return;
    }
    if (now + TOLERANCE < pace.due) {
        return;
    }
    const double start = secondsSinceStart();
    const Reason reason = read();
    pace.slowReadings = secondsSinceStart() - start > LONG_READING ? pace.slowReadings + 1 : 0;
    if (pace.slowReadings >= 2) {
        period = std::max(period, PERIOD_OF_SLOW);
    }
    if (isUnreadable(reason)) {
        period = std::max(period, PERIOD_OF_UNREADABLE);
    }
    pace.due = now + period;
}

template <typename Read>
void MachineFigures::take(Id id, double now, const Read& read) {
    const auto index = static_cast<std::size_t>(id);
    pace(mPaces[index], ROWS[index].period, now, [&] {
        at(id) = read();
        return at(id).reason;
    });
}

void MachineFigures::readCpu(double now, const Wanted& wanted) {
    const auto ask = [&](Id id, const auto& read) {
        if (wanted.test(static_cast<std::size_t>(id))) {
            take(id, now, read);
        }
    };
    ask(Id::CPU_LOAD_PROCESS, [&] {
        mCpu.readProcess(now);
        return mCpu.processLoad();
    });
    if (wanted.test(static_cast<std::size_t>(Id::CPU_LOAD_SYSTEM)) ||
        wanted.test(static_cast<std::size_t>(Id::CPU_LOAD_CORE))) {
        take(Id::CPU_LOAD_SYSTEM, now, [&] {
            mCpu.readMachine();
            return mCpu.systemLoad();
        });
        at(Id::CPU_LOAD_CORE) = mCpu.coreLoad();
    }
    ask(Id::CPU_CLOCK, [&] { return mCpu.clock(); });
    ask(Id::CPU_TEMPERATURE, [&] { return mCpu.temperature(); });
    ask(Id::MEMORY_PROCESS, [&] { return mCpu.processMemory(); });
    ask(Id::MEMORY_USED, [&] { return mCpu.usedMemory(); });
    ask(Id::MEMORY_FREE, [&] { return mCpu.availableMemory(); });
    ask(Id::THERMAL_STATUS, [&] { return mSystem.thermalStatus(); });
}

/// Reads the process's clients, and finds the device that they name.
void MachineFigures::lookForDevice(double now) {
    if (mIsSparing && !mGpu.isKnown() && now < mLookAgain) {
        return;
    }
    pace(mClientsPace, 0.0, now, [&] {
        if (mClients) {
            mClients->read(now);
        }
        const bool isSame = mLocatedClient && mClients && mClients->device() &&
                            mLocatedClient->isSameDevice(*mClients->device());
        if (!mIsSparing || !isSame || now >= mLookAgain) {
            locate();
            mLocatedClient = mClients ? mClients->device() : std::nullopt;
            mLookAgain = now + (mGpu.isKnown() ? PERIOD_OF_LOOKING : PERIOD_OF_LOOKING_IN_VAIN);
        }
        if (!hasNvidiaLibrary()) {
            readGpuOfProcess();
        }
        return Reason::NONE;
    });
}

/// The process's device; without a process the machine's, in a recorded folder also when no file names one.
void MachineFigures::locate() {
    GpuDevice device;
    if (mClients && mClients->nvidiaDevice()) {
        device = locateNvidia(mTree, *mClients->nvidiaDevice());
    } else if (mClients && mClients->device()) {
        device = locateGpu(mTree, *mClients->device());
    } else if (!mClients || !mTree.isLive()) {
        device = locateMainGpu(mTree);
    }
    if (device.name() != mGpu.name()) {
        mNvidia.reset();
    }
    mGpu = std::move(device);
}

void MachineFigures::readGpuOfProcess() {
    if (!mClients) {
        at(Id::GPU_LOAD_PROCESS) = at(Id::GPU_MEMORY_PROCESS) = Value::none(Reason::NO_PROCESS);
        return;
    }
    at(Id::GPU_LOAD_PROCESS) = mClients->load();
    at(Id::GPU_MEMORY_PROCESS) = mClients->memory(isApu(mTree, mGpu));
    const bool isKnown = mClients->device().has_value();
    if (!isKnown && mGpu.isKnown()) {
        at(Id::GPU_LOAD_PROCESS) = at(Id::GPU_MEMORY_PROCESS) =
            Value::none(Reason::NOT_SUPPORTED, mGpu.name());
    }
}

void MachineFigures::readGpu(double now, const Wanted& wanted) {
    const auto file = [&](Value (GpuFiles::*get)()) {
        return mGpu.isKnown() ? (mFiles.*get)() : Value::none(Reason::NO_FILE);
    };
    const auto ask = [&](Id id, const auto& read) {
        if (wanted.test(static_cast<std::size_t>(id))) {
            take(id, now, [&] {
                Value value = read();
                const bool isUnknown = !value && value.reason == Reason::NO_FILE && !mGpu.isKnown();
                return isUnknown ? Value::none(Reason::NO_DEVICE) : value;
            });
        }
    };
    const auto ofClient = [&](Value value, Value (GpuClients::*get)() const) {
        return mClients && mClients->device() ? firstOf(std::move(value), ((*mClients).*get)()) : value;
    };
    mFiles.begin(mGpu, now);
    ask(Id::GPU_LOAD_DEVICE, [&] { return firstOf(file(&GpuFiles::load), mSystem.gpuLoad(now)); });
    ask(Id::GPU_CLOCK,
        [&] { return firstOf(ofClient(file(&GpuFiles::clock), &GpuClients::clock), mSystem.gpuClock()); });
    ask(Id::GPU_CLOCK_MAX, [&] {
        return firstOf(ofClient(file(&GpuFiles::maxClock), &GpuClients::maxClock), mSystem.gpuMaxClock());
    });
    ask(Id::GPU_TEMPERATURE, [&] { return firstOf(file(&GpuFiles::temperature), mSystem.gpuTemperature()); });
    ask(Id::GPU_MEMORY_DEVICE, [&] { return file(&GpuFiles::memoryUsed); });
    ask(Id::GPU_MEMORY_TOTAL, [&] { return file(&GpuFiles::memoryTotal); });
    ask(Id::GPU_POWER, [&] { return file(&GpuFiles::power); });
    ask(Id::GPU_FAN, [&] { return file(&GpuFiles::fan); });
}

/// Asked only of a device that is awake and that this process works with: an open library keeps a laptop's
/// second GPU from sleeping.
bool MachineFigures::hasNvidiaLibrary() const {
    return mGpu.driver == NVIDIA && mTree.isLive() && mClients && mClients->nvidiaDevice();
}

void MachineFigures::readNvidia(double now, const Wanted& wanted) {
    if (mNvidia == nullptr) {
        mNvidia = std::make_unique<NvidiaLibrary>(mGpu.pciDevice, *mClients->nvidiaDevice());
    }
    const auto ask = [&](Id id, const auto& read) {
        if (wanted.test(static_cast<std::size_t>(id))) {
            take(id, now, read);
        }
    };
    NvidiaLibrary& library = *mNvidia;
    ask(Id::GPU_LOAD_PROCESS, [&] { return library.processLoad(mProcess); });
    ask(Id::GPU_LOAD_DEVICE, [&] { return library.load(); });
    ask(Id::GPU_CLOCK, [&] { return library.clock(); });
    ask(Id::GPU_CLOCK_MAX, [&] { return library.maxClock(); });
    ask(Id::GPU_TEMPERATURE, [&] { return library.temperature(); });
    ask(Id::GPU_MEMORY_PROCESS, [&] { return library.processMemory(mProcess); });
    ask(Id::GPU_MEMORY_DEVICE, [&] { return library.memoryUsed(); });
    ask(Id::GPU_MEMORY_TOTAL, [&] { return library.memoryTotal(); });
    ask(Id::GPU_POWER, [&] { return library.power(); });
    ask(Id::GPU_FAN, [&] { return library.fan(); });
}

std::string MachineFigures::advice(Id id) const {
    if (value(id).reason == Reason::SWITCHED_OFF) {
        const std::string mode = mGpu.driver == "panthor" ? "3" : "1";
        const std::string folder = mGpu.folder.empty() ? "/sys/class/drm/renderD128/device" : mGpu.folder;
        return "echo " + mode + " | sudo tee " + folder + "/profiling";
    }
    return {};
}

}  // namespace sources
