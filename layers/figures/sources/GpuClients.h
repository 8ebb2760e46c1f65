#pragma once

#include "figures/sources/FdInfo.h"
#include "figures/sources/FileTree.h"
#include "figures/sources/Value.h"

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace sources {

/// A GPU, as named by a process's open files.
struct GpuName {
    std::string driver;
    std::string pciDevice;  ///< empty for other buses
    int minor = -1;         ///< of the node in /dev/dri; -1 when it is not known

    /// Whether both are the same device. A card and a render node of one device match if the bus address is
    /// known.
    bool isSameDevice(const GpuName& other) const {
        return driver == other.driver && pciDevice == other.pciDevice;
    }
};

/// The GPU clients of one process: which device it works with, how much it loads it, and how much memory it
/// holds there. Each reading looks at every open file, because files come, go and change their numbers. One
/// thread at a time.
class GpuClients {
public:
    /// `process` is the folder with fd and fdinfo: "/proc/self" or "/proc/PID".
    GpuClients(const FileTree& tree, std::string process);

    /// Takes a reading. `now` is in seconds, on a clock that does not jump.
    void read(double now);

    /// The device whose engines worked most for this process between the last two readings; before there are
    /// two, the one where it holds the most memory. Does not change for some seconds while two devices take
    /// turns.
    const std::optional<GpuName>& device() const { return mDevice; }

    /// The number of an NVIDIA device that the process holds open, /dev/nvidia<N>.
    std::optional<int> nvidiaDevice() const { return mNvidia; }

    /// Percent, 0 to 100: the busiest class of engines of the device.
    Value load() const { return mLoad; }

    /// Bytes; on an APU including those in the machine's memory.
    Value memory(bool isApu) const;

    /// MHz, if the driver reports it here.
    Value clock() const { return highest(&FdInfo::Engine::currentHz); }
    Value maxClock() const { return highest(&FdInfo::Engine::maxHz); }

    /// Whether any engine has worked for this process since the last reading.
    bool hasWorked() const { return mHasWorked; }

    /// The error number of reading the process's files, or 0.
    int error() const { return mError; }

private:
    /// Counters may go back; the largest value counts until the counter exceeds it.
    struct Counters {
        std::uint64_t busyNs = 0;
        std::uint64_t cycles = 0;
        std::uint64_t totalCycles = 0;
    };
    struct Client {
        GpuName device;
        FdInfo info;
        std::string file;
        std::map<std::string, Counters> counters;
        std::map<std::string, double> loads;  ///< by engine class, percent, not yet cut at 100
    };
    using Clients = std::map<std::string, Client>;

    Clients collect();
    void lookAtNode(const std::string& number, int& minor);
    static void compare(Client& now, const Client& before, double seconds);
    void choose(double now);
    void updateLoad();
    Value highest(std::optional<std::uint64_t> FdInfo::Engine::*hertz) const;
    std::vector<const Client*> ofDevice() const;

    const FileTree& mTree;
    std::string mProcess;
    Clients mClients;
    std::optional<GpuName> mDevice;
    std::optional<int> mNvidia;
    Value mLoad = Value::none(Reason::NO_DEVICE);
    double mLastTime = 0.0;
    double mBestTime = 0.0;           // when no device worked more than the chosen one
    std::optional<double> mWorkTime;  // when the chosen one worked last; nothing before it has
    bool mHasRead = false;
    bool mHasWorked = false;
    int mError = 0;
};

}  // namespace sources
