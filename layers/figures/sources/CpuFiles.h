#pragma once

#include "figures/sources/FileTree.h"
#include "figures/sources/Value.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace sources {

/// The processors' figures and the memory's, from /proc and /sys. Loads are rates and need two readings. One
/// thread at a time.
class CpuFiles {
public:
    /// `process` is "/proc/self" or "/proc/PID"; empty when no process is meant.
    CpuFiles(const FileTree& tree, std::string process);

    /// Read what loads are made of. `now` is in seconds, on a clock that does not jump.
    void readProcess(double now);
    void readMachine();

    Value processLoad() const { return mProcessLoad; }  ///< percent of all processors that are online
    Value systemLoad() const { return mSystemLoad; }    ///< percent of all processors
    Value coreLoad() const { return mCoreLoad; }        ///< percent, of the busiest one

    /// MHz of the fastest processor at the moment: one that sleeps tells its last clock.
    Value clock() const;

    Value temperature() const;

    Value processMemory() const;    ///< bytes, shared pages in proportion where the kernel tells
    Value usedMemory() const;       ///< bytes: all but what applications could still get
    Value availableMemory() const;  ///< bytes

private:
    struct Ticks {
        std::uint64_t busy = 0;
        std::uint64_t idle = 0;
    };

    std::uint64_t onlineProcessors() const;
    Value meminfo(const char* first, const char* subtracted) const;

    const FileTree& mTree;
    std::string mProcess;
    std::map<std::string, Ticks> mTicks;  ///< "cpu" and each processor
    std::optional<std::uint64_t> mProcessTicks;
    double mProcessTime = 0.0;
    Value mProcessLoad = Value::none(Reason::NO_PROCESS);
    Value mSystemLoad;
    Value mCoreLoad;
};

}  // namespace sources
