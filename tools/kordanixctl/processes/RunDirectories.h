#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/// Programs that 'kordanixctl run' started each have a runtime directory of their own below the user's (see
/// runs/RunFolder.h). Nothing here removes one.
namespace control {

/// A program that was started so, with what it started itself.
struct Run {
    std::string directory;
    pid_t process;  ///< who shows the overlay, else the first that may, else 'run' itself
    /// All that are known to be in it, with the numbers of their own process namespaces.
    std::vector<pid_t> members;
};

/// The user's runtime directory, whether or not this process was itself started by 'run'. Empty, with the
/// reason in `error`, when there is none.
std::string userDirectory(std::string& error);

/// Whether the directory's name is that of a run.
bool isRunDirectory(const std::string& directory);

/// Whether no process is in the run any more, or the directory is no run's.
bool hasRunEnded(const std::string& directory);

/// The runs that go on, in ascending order of their processes.
std::vector<Run> findRuns(const std::string& userDirectory);

}  // namespace control
