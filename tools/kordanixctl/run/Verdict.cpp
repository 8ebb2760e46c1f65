#include "run/Verdict.h"

#include "run/WaysIn.h"
#include "runs/OverlayClaim.h"
#include "runs/OverlayNote.h"

#include <algorithm>
#include <tuple>
#include <vector>

namespace control {

std::string notShownReason(const std::string& folder, const std::string& obstacle) {
    const std::vector<platform::OverlayNote> notes = platform::readOverlayNotes(folder);
    if (std::any_of(notes.begin(), notes.end(), [](const auto& note) { return note.wasShown; })) {
        return {};
    }
    // Prefers the note of the process that had the claim; else of the one that drew the most frames.
    const pid_t claimant = platform::overlayClaimant(folder).value_or(0);
    const auto best = std::max_element(notes.begin(), notes.end(), [&](const auto& a, const auto& b) {
        return std::make_tuple(a.process == claimant, a.frames) <
               std::make_tuple(b.process == claimant, b.frames);
    });
    if (best != notes.end()) {
        return best->name + ": " +
               (best->reason.empty() ? "it ended before its first frame with it" : best->reason);
    }
    if (claimant != 0) {
        return "process " + std::to_string(claimant) +
               " was to show it, but ended before its first frame with it";
    }
    return obstacle.empty()
               ? "no frame of " + knownGraphics() + " was seen in any process that can reach " + folder
               : obstacle;
}

}  // namespace control
