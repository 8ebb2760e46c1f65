#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the kernel tells about processes.
namespace control {

/// The name that "debug.kordanix.proc" is compared with: the first word of the process's command line. Empty
/// when it cannot be read.
std::string processName(pid_t process);

/// When the process was started, in ticks since the machine was; together with its number that is a process
/// for good, through every exec. Nothing for one that has ended.
std::optional<std::uint64_t> startTime(pid_t process);

/// Whether a signal or a debugger has stopped it.
bool isStopped(pid_t process);

/// The text of a variable in the environment that the process's program was started with; empty when it is
/// not set. Nothing when the environment may not be read, or there is no such process.
std::optional<std::string> environmentVariable(pid_t process, const std::string& name);

/// All there are, in ascending order.
std::vector<pid_t> allProcesses();

/// The number that the whole text is, in plain decimal digits; nothing when it is none above 0.
std::optional<pid_t> toProcess(const std::string& text);

}  // namespace control
