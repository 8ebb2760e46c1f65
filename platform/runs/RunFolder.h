#pragma once

#include "io/OwnDescriptor.h"

#include <sys/types.h>

#include <string>

/// A run is a program that `kordanixctl run` started, with everything that it starts in turn. A run has its
/// own runtime directory, run-PID-START below the user's. In it lies our marker, the file "run". `run` and
/// every process with the overlay open the marker and hold a shared lock on it. We never remove a folder
/// without our marker, or with a locked one.
namespace platform {

/// The name of the marker in a run's folder.
constexpr const char* RUN_MARKER = "run";

/// In it, with a slash: what the run began with, for `reset`: a name and a value a line.
constexpr const char* INITIAL_PROPERTIES = "/properties.begin";

/// Creates the folder and its marker for a program that this process will start. Returns the path; on
/// failure, or when the path would be too long for a socket in it, an empty text with the reason in `error`.
std::string makeRunFolder(const std::string& userDirectory, std::string& error);

/// Whether the folder has a marker that we wrote. Follows no link.
bool isRunFolder(const std::string& folder);

/// The process id of `run` in the folder's name, running or not; 0 for any other name.
pid_t runProcess(const std::string& folder);

/// Whether the `run` in the folder's name has certainly ended; false for any other name.
bool hasLauncherEnded(const std::string& folder);

/// Whether any process holds a lock on the run's marker.
bool isRunHeld(const std::string& folder);

/// Whether the run has ended: the `run` in the folder's name has ended, and nobody holds a lock on our
/// marker. False when the folder is not a run's.
bool isRunOver(const std::string& folder);

/// Removes the folder of an ended run, without following links. It requires our marker with no lock on it,
/// and that the process in the folder's name has ended; when that is this process itself, the marker is
/// enough. False when it left anything behind.
bool removeEndedRun(const std::string& folder);

/// Keeps a run's folder from being removed. One thread at a time.
class RunHold {
public:
    /// Locks the marker if the folder is a run's; otherwise does nothing. Tries for two milliseconds.
    void take(const std::string& folder);

    /// Locks it again if the program has closed our descriptor. Costs a system call or two.
    void renew();

    /// Closes the descriptor. A forked child calls this, and the parent keeps the lock that they share; `run`
    /// calls it before it removes its folder.
    void forget();

private:
    std::string mFolder;
    OwnDescriptor mMarker;
};

}  // namespace platform
