#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace sources {

/// What /proc/PID/fdinfo/N says about the client behind an open file of a GPU. Bytes, nanoseconds, hertz.
struct FdInfo {
    /// One class of engines. A value is empty when the driver does not print it.
    struct Engine {
        std::optional<std::uint64_t> busyNs;
        std::optional<std::uint64_t> cycles;
        std::optional<std::uint64_t> totalCycles;  ///< the clock at the moment of reading
        std::uint64_t capacity = 1;                ///< engines in the class
        std::optional<std::uint64_t> maxHz;
        std::optional<std::uint64_t> currentHz;
    };
    struct Region {
        std::optional<std::uint64_t> resident;
        std::optional<std::uint64_t> total;
    };

    std::string driver;
    std::string pciDevice;  ///< "0000:03:00.0"; empty for other buses
    std::string client;     ///< empty when the driver numbers none
    std::map<std::string, Engine, std::less<>> engines;
    std::map<std::string, Region, std::less<>> regions;
};

/// Understands the keys that all drivers share, amdgpu's older names of regions, and amdgpu's texts from
/// before there were shared keys. Skips unknown lines. Nothing when the text is not a GPU client's.
std::optional<FdInfo> parseFdInfo(std::string_view text);

}  // namespace sources
