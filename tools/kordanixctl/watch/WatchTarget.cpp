#include "watch/WatchTarget.h"

#include "overlays/ChosenOverlays.h"
#include "overlays/OverlayState.h"
#include "processes/ProcessInfo.h"

namespace control {

std::string chooseWatchTarget(std::optional<pid_t> process, WatchTarget& target) {
    const ChosenOverlays chosen = chooseOverlay(process, Overlay::LOADED);
    if (chosen.error.empty()) {
        const pid_t only = chosen.processes.front();
        target = {chosen.directory, only, processName(only)};
    }
    return chosen.error;
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
