#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/// Programs that 'kordanixctl run' started each have a runtime directory of their own, run-PID-START below
/// the user's, named after the process and its start time. It is in use for as long as that process runs, or
/// any other that has it in its environment.
namespace control {

/// A program that was started so, with what it started itself.
struct Run {
    std::string directory;
    pid_t process;  ///< the one that was started, else the first of those that are left
};

/// The user's runtime directory, whether or not this process was itself started by 'run'. Empty, with the
/// reason in `error`, when there is none.
std::string userDirectory(std::string& error);

/// Whether the directory is that of a run.
bool isRunDirectory(const std::string& directory);

/// The programs that run now, in ascending order of their processes. Removes what ended ones left.
std::vector<Run> findRuns(const std::string& userDirectory);

/// Makes the directory for a program that will run in this very process. Returns its path; empty, with the
/// reason in `error`, when it cannot be made or its path would be too long for a socket in it.
std::string makeRunDirectory(const std::string& userDirectory, std::string& error);

void removeRunDirectory(const std::string& directory);

}  // namespace control
