#pragma once

#include "figures/sources/CpuFiles.h"
#include "figures/sources/FileTree.h"
#include "figures/sources/GpuClients.h"
#include "figures/sources/GpuDevice.h"
#include "figures/sources/GpuFiles.h"
#include "figures/sources/NvidiaLibrary.h"
#include "figures/sources/SystemFigures.h"
#include "figures/sources/Value.h"

#include <sys/types.h>

#include <array>
#include <bitset>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace sources {

/// Every figure that a machine tells, in the order in which they are listed.
enum class Id {
    CPU_LOAD_PROCESS,
    CPU_LOAD_SYSTEM,
    CPU_LOAD_CORE,
    CPU_CLOCK,
    CPU_TEMPERATURE,
    GPU_LOAD_PROCESS,
    GPU_LOAD_DEVICE,
    GPU_CLOCK,
    GPU_CLOCK_MAX,
    GPU_TEMPERATURE,
    GPU_MEMORY_PROCESS,
    GPU_MEMORY_DEVICE,
    GPU_MEMORY_TOTAL,
    GPU_POWER,
    GPU_FAN,
    MEMORY_PROCESS,
    MEMORY_USED,
    MEMORY_FREE,
    THERMAL_STATUS,
    COUNT
};

constexpr std::size_t FIGURES = static_cast<std::size_t>(Id::COUNT);
using Wanted = std::bitset<FIGURES>;

/// "cpu.load.process" and so on.
const char* nameOf(Id id);

/// percent (of all online processors; the core's of one), MHz, celsius, bytes, watts, rpm, level.
const char* unitOf(Id id);

/// Reads a machine's figures, for one process of it or for none. Opens many files and allocates: for a tool
/// or a helper thread, twice a second. One thread at a time.
class MachineFigures {
public:
    /// The tree outlives this. `process` is 0 for none, else a process of this machine; in a folder of
    /// another machine any number stands for the process whose files are in it.
    MachineFigures(const FileTree& tree, pid_t process);

    /// From now on reads as a guest in the process: most figures once a second instead of every time, rarely
    /// those that cannot be read or were slow twice, and looks for the device again only now and then.
    void beSparing() { mIsSparing = true; }

    /// Takes a reading of the figures that are wanted; `now` in seconds, on a clock that does not jump. Rates
    /// have values from the second reading on.
    void read(double now, const Wanted& wanted = Wanted().set());

    /// No readings are needed for a while: gives back what keeps a device awake. A later reading opens it
    /// again.
    void rest() { mNvidia.reset(); }

    const Value& value(Id id) const { return mValues[static_cast<std::size_t>(id)]; }
    const char* unit(Id id) const;

    const GpuDevice& gpu() const { return mGpu; }

    /// Whether a driver's library is still being loaded: a later reading will know more.
    bool isAnswerPending();

    /// One command that would make the figure readable; empty when there is none.
    std::string advice(Id id) const;

private:
    struct Pace {
        double due = 0.0;
        int slowReadings = 0;  ///< in a row
    };

    Value& at(Id id) { return mValues[static_cast<std::size_t>(id)]; }

    /// Reads, but what is not due yet. `read` answers with the reason why there is no value.
    template <typename Read>
    void pace(Pace& pace, double period, double now, const Read& read);
    template <typename Read>
    void take(Id id, double now, const Read& read);

    void readCpu(double now, const Wanted& wanted);
    void lookForDevice(double now);
    void locate();
    void readGpuOfProcess();
    bool hasNvidiaLibrary() const;
    void readGpu(double now, const Wanted& wanted);
    void readNvidia(double now, const Wanted& wanted);

    const FileTree& mTree;
    pid_t mProcess;
    CpuFiles mCpu;
    std::optional<GpuClients> mClients;
    GpuFiles mFiles;
    SystemFigures mSystem;
    GpuDevice mGpu;
    std::unique_ptr<NvidiaLibrary> mNvidia;
    std::array<Value, FIGURES> mValues;
    std::array<Pace, FIGURES> mPaces;
    Pace mClientsPace;
    bool mIsSparing = false;
    std::optional<GpuName> mLocatedClient;
    double mLookAgain = 0.0;  ///< for the device
};

}  // namespace sources
