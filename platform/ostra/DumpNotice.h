#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

/// Tells whoever pressed the key what became of a process's latest dump: a file "dump.PID" in the runtime
/// directory, replaced at each change.
struct DumpNotice {
    enum class State { RUNNING, DONE, FAILED };
    std::uint32_t number = 0;  ///< counts the process's dumps from 1
    State state = State::RUNNING;
    std::uint64_t frames = 0;  ///< how many were written, once it is done
    std::string folder;        ///< absolute; empty when it could not be created
    std::string error;         ///< why the dump failed
};

/// Writes this process's notice; does nothing for an empty directory. Costs some file operations.
void writeDumpNotice(const std::string& directory, const DumpNotice& notice);

void removeDumpNotice(const std::string& directory, pid_t process);

/// Reads the text of a notice; nothing when it is none.
std::optional<DumpNotice> parseDumpNotice(const std::string& text);

/// Reads a process's notice; nothing when the process has not dumped yet.
std::optional<DumpNotice> readDumpNotice(const std::string& directory, pid_t process);

}  // namespace platform
