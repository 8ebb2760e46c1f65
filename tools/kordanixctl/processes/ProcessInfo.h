#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the kernel knows about processes.
namespace control {

/// Returns the name that "debug.kordanix.proc" is compared with: the first word of the process's command
/// line. Empty when it cannot be read.
std::string processName(pid_t process);

/// When the process was started, in ticks since the machine was. The number and the start together identify a
/// process for good, through every exec. Nothing when it has ended.
std::optional<std::uint64_t> startTime(pid_t process);

/// Nothing when it has ended.
std::optional<pid_t> parentProcess(pid_t process);

/// Whether a signal or a debugger has stopped it.
bool isStopped(pid_t process);

/// Returns the value of a variable in the process's initial environment, empty when it is not set. Nothing
/// when we may not read the environment, or there is no such process.
std::optional<std::string> environmentVariable(pid_t process, const std::string& name);

/// Returns all processes, in ascending order.
std::vector<pid_t> allProcesses();

/// Converts the whole text, plain decimal digits, to a number above 0; nothing for any other text.
std::optional<pid_t> toProcess(const std::string& text);

}  // namespace control
