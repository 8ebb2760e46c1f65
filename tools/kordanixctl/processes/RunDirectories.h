#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/// Every program that 'kordanixctl run' started has a runtime directory of its own below the user's (see
/// runs/RunFolder.h). These functions never remove one.
namespace control {

/// A program that 'run' started, with everything that it started itself.
struct Run {
    std::string directory;
    pid_t process;  ///< the one that shows the overlay, else the first that may, else 'run'
    /// All known members, with their numbers in their own process namespaces.
    std::vector<pid_t> members;
};

/// Returns the user's runtime directory, even when 'run' started this process. When there is none, an empty
/// text with the reason in `error`.
std::string userDirectory(std::string& error);

/// Whether the directory's name is a run's.
bool isRunDirectory(const std::string& directory);

/// Whether no process is left in the run, or the directory is not a run's.
bool hasRunEnded(const std::string& directory);

/// Returns the runs that have not ended, in ascending order of their processes.
std::vector<Run> findRuns(const std::string& userDirectory);

}  // namespace control
