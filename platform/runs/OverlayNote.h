#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

/// What a process with the layer says of its overlay, for `run`, `doctor` and `picture`: a file "note.PID" in
/// the runtime directory, kept when the process has ended so that its launcher can say why nothing was seen.
namespace platform {

struct OverlayNote {
    pid_t process = 0;
    std::string name;          ///< as the library reads the process's name
    std::int32_t api = 0;      ///< the number of the layer's graphics API
    bool wasShown = false;     ///< the overlay was drawn in at least one frame
    std::uint64_t frames = 0;  ///< swaps seen when the note was written
    std::string reason;  ///< why it is not shown now, as a sentence's end: "its context is older than ..."
                         ///< empty while it is shown
};

/// Writes this process's note, replacing the last one. For changes only, not for every frame: some file
/// operations, without signals or waiting. Does nothing when there is no runtime directory.
void writeOverlayNote(const OverlayNote& note);

/// The notes in a runtime directory, in ascending order of their processes. What is no note is passed over.
std::vector<OverlayNote> readOverlayNotes(const std::string& directory);

}  // namespace platform
