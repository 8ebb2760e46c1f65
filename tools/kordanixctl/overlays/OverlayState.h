#pragma once

#include "runs/OverlayNote.h"

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Who shows the overlay, and why others do not.
namespace control {

/// Returns one of the library's properties as the library understands it, in a form for people.
std::string displayedValue(std::string_view shortName);

/// The notes of the processes in a runtime directory, and which process has the claim there.
class OverlayState {
public:
    explicit OverlayState(std::string directory);

    /// The processes that listen or have left a note, in ascending order. Some may have ended since.
    std::vector<pid_t> processes() const;

    /// Whether /proc does not show the process and it does not listen.
    bool hasEnded(pid_t process) const;

    /// The process's name as the library reads it.
    std::string name(pid_t process) const;

    /// The process's note; null when it has none, as without one of our layers.
    const platform::OverlayNote* note(pid_t process) const;

    /// The process that shows the overlay of a run; nothing when none has presented a frame yet, or a name
    /// decides.
    std::optional<pid_t> claimant() const { return mClaimant; }

    /// Why the process does not show the overlay, as the end of a sentence: "is not the one that shows the
    /// overlay ...". Empty when it does, or when we know no reason. With `mayBeOff`, being switched off is
    /// none.
    std::string obstacle(pid_t process, bool mayBeOff = false) const;

private:
    std::string mDirectory;
    std::vector<platform::OverlayNote> mNotes;
    std::optional<pid_t> mClaimant;
};

/// Returns those of a verb's processes (see recipients()) that show the overlay now, or with `mayBeOff` would
/// if it were switched on, and can take a request. When there is none, the list is empty and `error` has the
/// reason for each process.
std::vector<pid_t> findShowing(const std::string& directory, std::optional<pid_t> process, bool mayBeOff,
                               std::string& error);

/// Why a process that showed the overlay takes no request now, as the end of a sentence; empty when we know
/// no reason.
std::string findObstacle(const std::string& directory, pid_t process, bool mayBeOff = false);

/// "process 12 (glxgears)".
std::string describeProcess(pid_t process, const std::string& name);

/// Says that no process in this runtime directory has the overlay, and names the runs below it that have.
std::string nobodyListens(const std::string& directory);

}  // namespace control
