#include "figures/sources/MachineFigures.h"

#include <algorithm>
#include <utility>

namespace sources {

namespace {

struct Row {
    const char* name;
    const char* unit;
};

constexpr std::array<Row, FIGURES> ROWS = {{
    {"cpu.load.process", "percent"},
    {"cpu.load.system", "percent"},
    {"cpu.load.core", "percent"},
    {"cpu.clock", "MHz"},
    {"cpu.temperature", "celsius"},
    {"gpu.load.process", "percent"},
    {"gpu.load.device", "percent"},
    {"gpu.clock", "MHz"},
    {"gpu.clock.max", "MHz"},
    {"gpu.temperature", "celsius"},
    {"gpu.memory.process", "bytes"},
    {"gpu.memory.device", "bytes"},
    {"gpu.memory.total", "bytes"},
    {"gpu.power", "watts"},
    {"gpu.fan", "rpm"},
    {"memory.process", "bytes"},
    {"memory.used", "bytes"},
    {"memory.free", "bytes"},
}};

constexpr const char* NVIDIA = "nvidia";

std::string processFolder(const FileTree& tree, pid_t process) {
    if (process == 0) {
        return {};
    }
    return tree.isLive() ? "/proc/" + std::to_string(process) : "/proc/self";
}

}  // namespace

const char* nameOf(Id id) {
    return ROWS[static_cast<std::size_t>(id)].name;
}

const char* unitOf(Id id) {
    return ROWS[static_cast<std::size_t>(id)].unit;
}

MachineFigures::MachineFigures(const FileTree& tree, pid_t process)
    : mTree(tree), mProcess(process), mCpu(tree, processFolder(tree, process)), mFiles(tree) {
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
    if (mClients) {
        mClients->read(now);
    }
    locate();
    readGpuOfProcess();
    readGpu(now, wanted);
    if (mGpu.driver == NVIDIA) {
        readNvidia(wanted);
    }
}

void MachineFigures::readCpu(double now, const Wanted& wanted) {
    const auto isWanted = [&](Id id) { return wanted.test(static_cast<std::size_t>(id)); };
    mCpu.readLoads(now, isWanted(Id::CPU_LOAD_PROCESS),
                   isWanted(Id::CPU_LOAD_SYSTEM) || isWanted(Id::CPU_LOAD_CORE));
    at(Id::CPU_LOAD_PROCESS) = mCpu.processLoad();
    at(Id::CPU_LOAD_SYSTEM) = mCpu.systemLoad();
    at(Id::CPU_LOAD_CORE) = mCpu.coreLoad();
    const auto take = [&](Id id, Value (CpuFiles::*get)() const) {
        if (isWanted(id)) {
            at(id) = (mCpu.*get)();
        }
    };
    take(Id::CPU_CLOCK, &CpuFiles::clock);
    take(Id::CPU_TEMPERATURE, &CpuFiles::temperature);
    take(Id::MEMORY_PROCESS, &CpuFiles::processMemory);
    take(Id::MEMORY_USED, &CpuFiles::usedMemory);
    take(Id::MEMORY_FREE, &CpuFiles::availableMemory);
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
    const auto take = [&](Id id, Value (GpuFiles::*get)()) {
        if (wanted.test(static_cast<std::size_t>(id))) {
            at(id) = mGpu.isKnown() ? (mFiles.*get)() : Value::none(Reason::NO_DEVICE);
        }
    };
    mFiles.begin(mGpu, now);
    take(Id::GPU_LOAD_DEVICE, &GpuFiles::load);
    take(Id::GPU_CLOCK, &GpuFiles::clock);
    take(Id::GPU_CLOCK_MAX, &GpuFiles::maxClock);
    take(Id::GPU_TEMPERATURE, &GpuFiles::temperature);
    take(Id::GPU_MEMORY_DEVICE, &GpuFiles::memoryUsed);
    take(Id::GPU_MEMORY_TOTAL, &GpuFiles::memoryTotal);
    take(Id::GPU_POWER, &GpuFiles::power);
    take(Id::GPU_FAN, &GpuFiles::fan);
    if (mClients && mClients->device()) {
        at(Id::GPU_CLOCK) = firstOf(std::move(at(Id::GPU_CLOCK)), mClients->clock());
        at(Id::GPU_CLOCK_MAX) = firstOf(std::move(at(Id::GPU_CLOCK_MAX)), mClients->maxClock());
    }
}

/// Asked only of a device that is awake and that this process works with: an open library keeps a laptop's
/// second GPU from sleeping.
void MachineFigures::readNvidia(const Wanted& wanted) {
    if (isAsleep(mTree, mGpu)) {
        for (const Id id : {Id::GPU_LOAD_PROCESS, Id::GPU_LOAD_DEVICE, Id::GPU_CLOCK, Id::GPU_CLOCK_MAX,
                            Id::GPU_TEMPERATURE, Id::GPU_MEMORY_PROCESS, Id::GPU_MEMORY_DEVICE,
                            Id::GPU_MEMORY_TOTAL, Id::GPU_POWER, Id::GPU_FAN}) {
            at(id) = Value::none(Reason::ASLEEP, mGpu.folder + "/power/runtime_status");
        }
        return;
    }
    if (!mTree.isLive() || !mClients || !mClients->nvidiaDevice()) {
        return;
    }
    if (mNvidia == nullptr) {
        mNvidia = std::make_unique<NvidiaLibrary>(mGpu.pciDevice, *mClients->nvidiaDevice());
    }
    const auto take = [&](Id id, auto get) {
        if (wanted.test(static_cast<std::size_t>(id))) {
            at(id) = get();
        }
    };
    NvidiaLibrary& library = *mNvidia;
    take(Id::GPU_LOAD_PROCESS, [&] { return library.processLoad(mProcess); });
    take(Id::GPU_LOAD_DEVICE, [&] { return library.load(); });
    take(Id::GPU_CLOCK, [&] { return library.clock(); });
    take(Id::GPU_CLOCK_MAX, [&] { return library.maxClock(); });
    take(Id::GPU_TEMPERATURE, [&] { return library.temperature(); });
    take(Id::GPU_MEMORY_PROCESS, [&] { return library.processMemory(mProcess); });
    take(Id::GPU_MEMORY_DEVICE, [&] { return library.memoryUsed(); });
    take(Id::GPU_MEMORY_TOTAL, [&] { return library.memoryTotal(); });
    take(Id::GPU_POWER, [&] { return library.power(); });
    take(Id::GPU_FAN, [&] { return library.fan(); });
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
