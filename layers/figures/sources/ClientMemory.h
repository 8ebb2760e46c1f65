#pragma once

#include <cstdint>
#include <optional>

#include "figures/sources/FdInfo.h"

namespace sources {

/// Bytes that a client holds in the regions that its driver counts as the GPU's own; on an APU what lies in
/// the machine's memory too. Nothing when the driver tells none of them.
std::optional<std::uint64_t> ownMemory(const FdInfo& info, bool isApu);

/// Bytes in all regions: how much of a device the client has, to compare devices by.
std::uint64_t allMemory(const FdInfo& info);

}  // namespace sources
