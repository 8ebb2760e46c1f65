#include "figures/sources/ClientMemory.h"

#include <initializer_list>

namespace sources {

namespace {

/// The memory in the regions that the driver counts as the GPU's own.
std::optional<std::uint64_t> residentIn(const FdInfo& info, std::initializer_list<const char*> regions) {
    std::optional<std::uint64_t> sum;
    for (const char* const name : regions) {
        const auto region = info.regions.find(name);
        if (region != info.regions.end()) {
            const auto bytes = region->second.resident ? region->second.resident : region->second.total;
            sum = bytes ? std::optional(sum.value_or(0) + *bytes) : sum;
        }
    }
    return sum;
}

}  // namespace

std::optional<std::uint64_t> ownMemory(const FdInfo& info, bool isApu) {
    if (info.driver == "amdgpu") {
        return isApu ? residentIn(info, {"vram", "gtt"}) : residentIn(info, {"vram"});
    }
    if (info.driver == "i915") {
        const auto local = residentIn(info, {"local0", "local1"});
        return local ? local : residentIn(info, {"system0"});
    }
    if (info.driver == "xe") {
        const auto local = residentIn(info, {"vram0", "vram1"});
        return local ? local : residentIn(info, {"gtt"});
    }
    return residentIn(info, {"memory"});
}

std::uint64_t allMemory(const FdInfo& info) {
    std::uint64_t sum = 0;
    for (const auto& [name, region] : info.regions) {
        sum += region.resident ? *region.resident : region.total.value_or(0);
    }
    return sum;
}

}  // namespace sources
