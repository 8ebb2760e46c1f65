#pragma once

#include "figures/sources/FdInfo.h"

#include <cstdint>
#include <optional>

namespace sources {

/// The bytes that a client holds in the regions that its driver counts as the GPU's own; on an APU also those
/// in the machine's memory. Nothing when the driver reports none of these regions.
std::optional<std::uint64_t> ownMemory(const FdInfo& info, bool isApu);

/// The bytes in all regions; a measure to compare devices by.
std::uint64_t allMemory(const FdInfo& info);

}  // namespace sources
