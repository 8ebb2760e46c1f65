#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <optional>
#include <ostream>
#include <string>

namespace software {
class Image;
}

namespace control {

/// Asks a process to write its next frame with the overlay, and waits for it at most `seconds`. Returns an
/// empty text, or what went wrong. Any thread, see EndSignals.
std::string fetchPicture(const std::string& directory, pid_t process, double seconds, software::Image& image);

/// Asks a process to write its next frame with the overlay, and saves it as a PNG file, over an existing one.
/// Without a process, it asks the only one that listens. With an empty path it makes a new file in the folder
/// for logs, and tells so on `out` and on the screen. Fails when no picture comes within `seconds`.
ExitCode savePicture(std::optional<pid_t> process, const std::string& path, double seconds, std::ostream& out,
                     std::ostream& err);

}  // namespace control
