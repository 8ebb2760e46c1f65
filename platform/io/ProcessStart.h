#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>

namespace platform {

/// When the process was started, in ticks since the machine was. The number and the start together identify a
/// process for good, through every exec. Nothing when it has ended or /proc does not show it.
std::optional<std::uint64_t> processStart(pid_t process);

/// Whether the process has certainly ended: nobody has its number, or a process with another start has it.
/// False for a process that this one cannot see because /proc hides it or belongs to another namespace. The
/// number is one of this process's own namespace.
bool hasSurelyEnded(pid_t process, std::uint64_t start);

}  // namespace platform
