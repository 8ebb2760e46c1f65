#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

/// How a verb that reaches running overlays begins: in the chosen runtime directory (see Addressing.h) it
/// finds the processes that are meant, or says why there are none.
namespace control {

enum class Overlay {
    SHOWN,   ///< it is on the screen
    LOADED,  ///< or only switched off
};

struct ChosenOverlays {
    std::string directory;
    std::vector<pid_t> processes;
    std::string error;  ///< in place of the processes, for the user
};

/// Those that can take a request now.
ChosenOverlays chooseOverlays(std::optional<pid_t> process, Overlay which);

/// The only one; of several that listen, the only one that shows the overlay.
ChosenOverlays chooseOverlay(std::optional<pid_t> process, Overlay which);

/// All that listen, whether they have an overlay or not.
ChosenOverlays chooseListeners(std::optional<pid_t> process);

/// Why there is no program whose settings a verb could change: none listens or has told of its overlay, and
/// no run waits for one. Empty otherwise.
std::string whyNobodyRuns(std::optional<pid_t> process);

}  // namespace control
