#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

/// Tells whoever asked for it what became of one of a process's logs.
struct LogNotice {
    enum class State { RUNNING, DONE, FAILED };
    std::uint32_t number = 0;  ///< counts the process's logs from 1
    State state = State::RUNNING;
    std::uint64_t frames = 0;  ///< how many have been written, once it is done
    std::string path;          ///< absolute, of the file; empty when it could not be created
    std::string error;         ///< why the log failed
};

/// Replaces this process's notices, the file "log.PID" in the directory, by these; only the last are kept.
/// Does nothing for an empty directory. Costs some file operations.
void writeLogNotices(const std::string& directory, const std::vector<LogNotice>& notices);

void removeLogNotices(const std::string& directory, pid_t process);

/// A process's notices, the newest last; none when it has not logged yet.
std::vector<LogNotice> readLogNotices(const std::string& directory, pid_t process);

/// The processes with notices in the directory, in ascending order.
std::vector<pid_t> processesWithLogs(const std::string& directory);

}  // namespace platform
