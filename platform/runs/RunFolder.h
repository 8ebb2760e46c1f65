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

/// Whether any process holds the run's marker.
bool isRunHeld(const std::string& folder);

/// Removes what an ended run left: on evidence only, which is a marker of ours that nobody holds. False when
/// it was left alone.
bool removeEndedRun(const std::string& folder);

/// Keeps a run's folder from being removed. One thread at a time.
class RunHold {
public:
    /// Takes the lock if the folder is that of a run; otherwise holds nothing.
    void take(const std::string& folder);

    /// Takes it anew when the program has closed our descriptor meanwhile. A system call or two.
    void renew();

    /// In a forked child, which shares the parent's lock: lets go of the descriptor, not of the lock.
    void forget();

private:
    std::string mFolder;
    OwnDescriptor mMarker;
};

}  // namespace platform
