#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// What became of a process's latest dump, for whoever pressed the key: a file "dump.PID" in the runtime
/// directory, replaced at each change.
struct DumpNotice {
    enum class State { RUNNING, DONE, FAILED };
    std::uint32_t number = 0;  ///< of the dump in its process, from 1
    State state = State::RUNNING;
    std::uint64_t frames = 0;  ///< written, when it is done
    std::string folder;        ///< absolute; empty when none could be made
    std::string error;         ///< why it failed
};

/// Writes this process's notice; with an empty directory nothing. Some file operations.
void writeDumpNotice(const std::string& directory, const DumpNotice& notice);

void removeDumpNotice(const std::string& directory, pid_t process);

/// Nothing when the process has not dumped yet.
std::optional<DumpNotice> readDumpNotice(const std::string& directory, pid_t process);

}  // namespace platform
