#include "watch/WatchTarget.h"

#include "ostra/ProcessSocket.h"
#include "overlays/OverlayState.h"
#include "processes/Addressing.h"
#include "processes/ProcessInfo.h"
#include "properties/RuntimeDirectory.h"

#include <algorithm>
#include <vector>

namespace control {

std::string chooseWatchTarget(std::optional<pid_t> process, WatchTarget& target) {
    const platform::RuntimeDirectory directory = platform::openRuntimeDirectory();
    if (!directory.error.empty()) {
        return directory.error;
    }
    const std::vector<pid_t> listening = platform::listeningProcesses(directory.path);
    std::vector<pid_t> meant = recipients(directory.path, process);
    meant.erase(std::remove_if(meant.begin(), meant.end(),
                               [&](pid_t each) {
                                   return std::find(listening.begin(), listening.end(), each) ==
                                          listening.end();
                               }),
                meant.end());
    std::string error;
    if (meant.size() != 1) {
        // With none it says why; of several it chooses.
        meant = findShowing(directory.path, process, error);
    }
    if (meant.empty()) {
        return error;
    }
    if (meant.size() > 1) {
        error = "several programs could be meant:";
        for (const pid_t each : meant) {
            error += "\n  " + std::to_string(each) + ' ' + processName(each);
        }
        return error + "\n'--process PID' chooses one";
    }
    target = {directory.path, meant.front(), processName(meant.front())};
    return {};
}

std::string describeStandstill(const FigureFeed& feed) {
    constexpr std::chrono::milliseconds PATIENCE{1500};
    if (std::chrono::steady_clock::now() - feed.lastNews() < PATIENCE) {
        return {};
    }
    const std::string obstacle = findObstacle(feed.directory(), feed.process());
    const std::string silence = feed.hasNews()
                                    ? "presents no frame now"
                                    : "has told no figures: it presents no frame, or its layer tells none";
    return "process " + std::to_string(feed.process()) + ' ' + (obstacle.empty() ? silence : obstacle);
}

std::string baseName(const std::string& name) {
    return name.substr(name.rfind('/') + 1);
}

}  // namespace control
