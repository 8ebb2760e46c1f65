#include "overlays/ChosenOverlays.h"

#include "ostra/ProcessSocket.h"
#include "overlays/OverlayState.h"
#include "processes/Addressing.h"
#include "processes/ProcessInfo.h"
#include "properties/RuntimeDirectory.h"
#include "runs/RunFolder.h"

#include <algorithm>

namespace control {

namespace {

ChosenOverlays open() {
    platform::RuntimeDirectory directory = platform::openRuntimeDirectory();
    return {directory.path, {}, directory.error};
}

}  // namespace

ChosenOverlays chooseOverlays(std::optional<pid_t> process, Overlay which) {
    ChosenOverlays chosen = open();
    if (chosen.error.empty()) {
        chosen.processes = findShowing(chosen.directory, process, which == Overlay::LOADED, chosen.error);
    }
    return chosen;
}

ChosenOverlays chooseOverlay(std::optional<pid_t> process, Overlay which) {
    if (which == Overlay::LOADED) {
        ChosenOverlays chosen = chooseListeners(process);
        const std::vector<pid_t> listening = platform::listeningProcesses(chosen.directory);
        if (chosen.processes.size() == 1 &&
            std::count(listening.begin(), listening.end(), chosen.processes.front()) != 0) {
            return chosen;
        }
    }
    // With none it says why; of several it chooses.
    ChosenOverlays chosen = chooseOverlays(process, Overlay::SHOWN);
    if (chosen.processes.size() > 1) {
        chosen.error = "several programs could be meant:";
        for (const pid_t each : chosen.processes) {
            chosen.error += "\n  " + std::to_string(each) + ' ' + processName(each);
        }
        chosen.error += "\n'--process PID' chooses one";
        chosen.processes.clear();
    }
    return chosen;
}

ChosenOverlays chooseListeners(std::optional<pid_t> process) {
    ChosenOverlays chosen = open();
    if (chosen.error.empty()) {
        chosen.processes = recipients(chosen.directory, process);
        chosen.error = chosen.processes.empty() ? nobodyListens(chosen.directory) : std::string();
    }
    return chosen;
}

std::string whyNobodyRuns(std::optional<pid_t> process) {
    const ChosenOverlays chosen = chooseListeners(process);
    const bool isAnybody = chosen.error.empty() || platform::runProcess(chosen.directory) != 0 ||
                           !OverlayState(chosen.directory).processes().empty();
    return isAnybody ? std::string() : chosen.error;
}

}  // namespace control
