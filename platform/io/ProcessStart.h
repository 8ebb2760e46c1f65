#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>

namespace platform {

/// When a process was started, in ticks since the machine was: with its number that is a process for good,
/// through every exec. Nothing for one that has ended, and where /proc does not show it.
std::optional<std::uint64_t> processStart(pid_t process);

/// Whether it is sure that the process has ended: its number is nobody's, or by now somebody else's. A
/// process that this one cannot see, because /proc is hidden or foreign, has not surely ended. Numbers are
/// those of this process's own namespace.
bool hasSurelyEnded(pid_t process, std::uint64_t start);

}  // namespace platform
