#pragma once

#include <sys/types.h>

#include <string>

#include "io/OwnDescriptor.h"

/// A run is a program that `kordanixctl run` started, with whatever it starts in turn. It has a runtime
/// directory of its own, run-PID-START below the user's, in which lies the file "run", the marker that we
/// wrote. `run` and every process with the overlay hold a shared lock on the marker, each by an open file of
/// its own: a folder without our marker, or with a locked one, is never removed.
namespace platform {

/// The file in a run's folder that says whose it is.
constexpr const char* RUN_MARKER = "run";

/// Makes the folder, with its marker, for a program that this process will start. Returns its path; empty,
/// with the reason in `error`, when it cannot be made or its path would be too long for a socket in it.
std::string makeRunFolder(const std::string& userDirectory, std::string& error);

/// Whether the folder has a marker that we wrote. Follows no link.
bool isRunFolder(const std::string& folder);

/// The number of `run` in the folder's name, whether or not it still runs; 0 for another name.
pid_t runProcess(const std::string& folder);

/// Whether `run` has surely ended, by the folder's name; false for another name.
bool hasLauncherEnded(const std::string& folder);

/// Whether any process holds the run's marker.
bool isRunHeld(const std::string& folder);

/// Whether the run has ended: the folder's name says that `run` has, and nobody holds a marker of ours.
/// False for what is no run's folder.
bool isRunOver(const std::string& folder);

/// Removes what an ended run left, without following links: on evidence only, which is a marker of ours that
/// nobody holds, and the end of the process in the name; for that process's own run, the marker alone.
/// False when it, or a part of it, was left.
bool removeEndedRun(const std::string& folder);

/// Keeps a run's folder from being removed. One thread at a time.
class RunHold {
public:
    /// Takes the lock if the folder is that of a run; otherwise holds nothing. Tries for two milliseconds.
    void take(const std::string& folder);

    /// Takes it anew when the program has closed our descriptor meanwhile. A system call or two.
    void renew();

    /// Closes the descriptor. In a forked child, which shares the parent's lock, the parent keeps that; so
    /// does `run` let go before it removes its folder.
    void forget();

private:
    std::string mFolder;
    OwnDescriptor mMarker;
};

}  // namespace platform
