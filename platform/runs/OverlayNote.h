#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

/// What a process with the layer reports about its overlay, for `run`, `doctor` and `picture`: a file
/// "note.PID" in the runtime directory. It stays when the process ends, so that the launcher can say why
/// nothing was shown.
namespace platform {

struct OverlayNote {
    pid_t process = 0;
    std::string name;          ///< as the library reads the process's name
    std::int32_t api = 0;      ///< the number of the layer's graphics API
    bool wasShown = false;     ///< the overlay was drawn in at least one frame
    std::uint64_t frames = 0;  ///< how many swaps there were when the note was written
    std::string reason;  ///< why it is not shown now, as a sentence's end: "its context is older than ..."
                         ///< empty while it is shown
    std::uint64_t ownNanoseconds = 0;  ///< that the layer itself takes of a frame, on average; 0: not known
};

/// Writes this process's note over the last one. Call it when something changes, not at every frame: it costs
/// some file operations, but raises no signal and never waits. Does nothing without a runtime directory, nor
/// over the note of another API that has shown the overlay when this one has not: a picture may pass both.
void writeOverlayNote(const OverlayNote& note);

/// Reads the notes in a runtime directory, in ascending order of their processes; skips files that are no
/// notes.
std::vector<OverlayNote> readOverlayNotes(const std::string& directory);

}  // namespace platform
