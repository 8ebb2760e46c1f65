#pragma once

#include "watch/FigureFeed.h"

#include <sys/types.h>

#include <optional>
#include <string>

namespace control {

/// The process to watch, whether it shows the overlay now or not.
struct WatchTarget {
    std::string directory;
    pid_t process = 0;
    std::string name;  ///< its command line's first word
};

/// Finds the process in the chosen runtime directory (see Addressing.h): `process` if given, else the only
/// one that listens, of several that which shows the overlay. Returns an empty text, or what is wrong.
std::string chooseWatchTarget(std::optional<pid_t> process, WatchTarget& target);

/// Why there has been nothing new for more than a second, as a sentence; empty while there is.
std::string describeStandstill(const FigureFeed& feed);

/// The file's name alone.
std::string baseName(const std::string& name);

}  // namespace control
