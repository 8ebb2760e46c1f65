#include "overlays/OverlayState.h"

#include "io/ProcessStart.h"
#include "ostra/ProcessSocket.h"
#include "processes/Addressing.h"
#include "processes/ProcessInfo.h"
#include "processes/RunDirectories.h"
#include "runs/OverlayClaim.h"
#include "settings/Properties.h"
#include "settings/PropertyTable.h"
#include "settings/ValueText.h"

#include <algorithm>
#include <utility>

namespace control {

namespace {

bool contains(const std::vector<pid_t>& processes, pid_t process) {
    return std::find(processes.begin(), processes.end(), process) != processes.end();
}

std::string obstacleOf(const OverlayState& state, const std::vector<pid_t>& listening, pid_t process,
                       bool mayBeOff) {
    if (isStopped(process)) {
        return "is stopped; 'kill -CONT " + std::to_string(process) + "' lets it go on";
    }
    std::string obstacle = state.obstacle(process, mayBeOff);
    if (!contains(listening, process) && (obstacle.empty() || state.note(process) == nullptr)) {
        obstacle = "shows no overlay: it has none, or has presented no frame yet";
    }
    return obstacle;
}

}  // namespace

std::string displayedValue(std::string_view shortName) {
    const Property* const property = findProperty(shortName);
    return toDisplayText(*property, readProperty(fullName(*property)));
}

OverlayState::OverlayState(std::string directory)
    : mDirectory(std::move(directory)),
      mNotes(platform::readOverlayNotes(mDirectory)),
      mClaimant(platform::overlayClaimant(mDirectory)) {}

std::vector<pid_t> OverlayState::processes() const {
    std::vector<pid_t> all = platform::listeningProcesses(mDirectory);
    for (const platform::OverlayNote& each : mNotes) {
        all.push_back(each.process);
    }
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
}

bool OverlayState::hasEnded(pid_t process) const {
    return !platform::processStart(process) && !contains(platform::listeningProcesses(mDirectory), process);
}

std::string OverlayState::name(pid_t process) const {
    const platform::OverlayNote* const its = note(process);
    return its != nullptr ? its->name : processName(process);
}

const platform::OverlayNote* OverlayState::note(pid_t process) const {
    const auto found = std::find_if(mNotes.begin(), mNotes.end(), [&](const platform::OverlayNote& each) {
        return each.process == process;
    });
    return found == mNotes.end() ? nullptr : &*found;
}

std::string OverlayState::obstacle(pid_t process, bool mayBeOff) const {
    const bool isOff = displayedValue("status") != "true";
    if (isOff && !mayBeOff) {
        return "does not show the overlay, which is switched off";
    }
    if (mClaimant && *mClaimant != process) {
        return "does not show the overlay; " + describeProcess(*mClaimant, name(*mClaimant)) +
               " presented a frame first";
    }
    const platform::OverlayNote* const its = note(process);
    const std::string wanted = displayedValue("proc");
    // Without a name, nobody has claimed the overlay yet. A process that cannot show it never does, but says
    // why.
    if (wanted.empty() && its != nullptr && !its->reason.empty()) {
        return "does not show the overlay: " + its->reason;
    }
    if (name(process) != wanted) {
        return "does not show the overlay, which is for '" + wanted + "'";
    }
    if (its == nullptr) {
        return {};
    }
    const std::string api = std::to_string(its->api);
    if (api != displayedValue("api")) {
        return "does not show the overlay: api is set to " + displayedValue("api") +
               ", but its graphics API has number " + api;
    }
    // While it is off, that is the reason which the note has.
    return its->reason.empty() || isOff ? std::string() : "does not show the overlay: " + its->reason;
}

std::vector<pid_t> findShowing(const std::string& directory, std::optional<pid_t> process, bool mayBeOff,
                               std::string& error) {
    const OverlayState state(directory);
    const std::vector<pid_t> listening = platform::listeningProcesses(directory);
    std::vector<pid_t> meant = recipients(directory, process);
    if (meant.empty()) {
        meant = state.processes();  // a process that cannot show it leaves a note but does not listen
    }
    std::vector<pid_t> showing;
    std::vector<std::string> obstacles;
    for (const pid_t each : meant) {
        if (platform::processStart(each)) {
            const std::string obstacle = obstacleOf(state, listening, each, mayBeOff);
            if (obstacle.empty()) {
                showing.push_back(each);
            } else {
                obstacles.push_back(describeProcess(each, state.name(each)) + ' ' + obstacle);
            }
        }
    }
    if (showing.empty()) {
        error = obstacles.empty() ? nobodyListens(directory) : "";
        for (const std::string& obstacle : obstacles) {
            error += (error.empty() ? "" : "\n  ") + obstacle;
        }
    }
    return showing;
}

std::string findObstacle(const std::string& directory, pid_t process, bool mayBeOff) {
    return obstacleOf(OverlayState(directory), platform::listeningProcesses(directory), process, mayBeOff);
}

std::string describeProcess(pid_t process, const std::string& name) {
    return "process " + std::to_string(process) + (name.empty() ? name : " (" + name + ')');
}

std::string nobodyListens(const std::string& directory) {
    std::string text = "no overlay is running: no process listens in " + directory;
    for (const Run& run : findRuns(directory)) {
        text += "\n  'kordanixctl --process " + std::to_string(run.process) + " ...' reaches " +
                describeProcess(run.process, processName(run.process)) + ", which 'kordanixctl run' started";
    }
    return text;
}

}  // namespace control
