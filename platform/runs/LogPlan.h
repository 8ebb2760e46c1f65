#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Where a process writes its logs of frame times, and when it begins one by itself.
namespace platform {

/// $XDG_DATA_HOME/kordanix/logs, by default below ~/.local/share. Empty, with the reason in `error`, when the
/// environment has neither that nor HOME as an absolute path. Creates nothing.
std::string logsFolder(std::string& error);

/// What `run` wants of the processes that it starts: the file "log.plan" in the run's folder.
struct LogPlan {
    std::string folder;                       ///< absolute; empty: logsFolder()
    bool isStarted = false;                   ///< a log begins by itself
    std::uint32_t afterMs = 0;                ///< then so long after the first frame
    std::optional<std::uint32_t> forMs = {};  ///< then for so long; nothing: until the end
};

/// Returns 0 or an error number.
int writeLogPlan(const std::string& runFolder, const LogPlan& plan);

/// Whether there may be a plan to read.
bool hasLogPlan(const std::string& runFolder);

/// An empty plan where there is none, or none that can be read.
LogPlan readLogPlan(const std::string& runFolder);

}  // namespace platform
