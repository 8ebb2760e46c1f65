#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "runs/OverlayNote.h"

/// Who shows the overlay, and why others do not.
namespace control {

/// What the library makes of one of its properties, for people.
std::string displayedValue(std::string_view shortName);

/// What processes say of their overlays in the folder of a runtime directory, and who has the claim there.
class OverlayState {
public:
    explicit OverlayState(std::string directory);

    /// Those that listen or have left a note, in ascending order; also ones that have ended since.
    std::vector<pid_t> processes() const;

    /// Whether the process is neither to be seen nor listens.
    bool hasEnded(pid_t process) const;

    /// The process's name as the library reads it.
    std::string name(pid_t process) const;

    /// What it said itself; null when it said nothing, as a process without one of our layers.
    const platform::OverlayNote* note(pid_t process) const;

    /// Who shows the overlay of a run; nothing while nobody has presented a frame, or it was settled by name.
    std::optional<pid_t> claimant() const { return mClaimant; }

    /// Why it does not show the overlay, as a sentence's end: "is not the one that shows the overlay ...".
    /// Empty when it shows it, or nothing is known against it.
    std::string obstacle(pid_t process) const;

private:
    std::string mDirectory;
    std::vector<platform::OverlayNote> mNotes;
    std::optional<pid_t> mClaimant;
};

/// The processes that show the overlay now and can be asked for something: of those that a verb is about (see
/// recipients()). Empty, with the reason for each of them in `error`, when there is none.
std::vector<pid_t> findShowing(const std::string& directory, std::optional<pid_t> process,
                               std::string& error);

/// Why a process that showed the overlay takes nothing now, as a sentence's end; empty when nothing is known
/// against it.
std::string findObstacle(const std::string& directory, pid_t process);

/// "process 12 (glxgears)".
std::string describeProcess(pid_t process, const std::string& name);

/// That no process has the overlay in this runtime directory, and which runs below it have.
std::string nobodyListens(const std::string& directory);

}  // namespace control
