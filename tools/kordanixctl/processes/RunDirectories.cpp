#include "processes/RunDirectories.h"

#include "io/ProcessStart.h"
#include "ostra/ProcessSocket.h"
#include "processes/ProcessInfo.h"
#include "properties/RuntimeDirectory.h"
#include "runs/OverlayClaim.h"
#include "runs/OverlayNote.h"
#include "runs/RunFolder.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>

namespace control {

namespace {

namespace fs = std::filesystem;

/// Returns, for each runtime directory, the other processes that have it in their environment.
std::map<std::string, std::vector<pid_t>> processesByDirectory() {
    std::map<std::string, std::vector<pid_t>> directories;
    for (const pid_t process : allProcesses()) {
        if (process == getpid()) {
            continue;
        }
        const auto directory = environmentVariable(process, "KORDANIX_RUNTIME_DIR");
        if (directory && !directory->empty()) {
            directories[*directory].push_back(process);
        }
    }
    return directories;
}

/// Returns the members of a run: first the processes with the overlay, then those that inherited the folder's
/// name, then 'run'. A process's own note comes first, because the process may hide its environment or have
/// another number in its own namespace.
std::vector<pid_t> findMembers(const std::string& directory, const std::vector<pid_t>& inheritors) {
    std::vector<pid_t> members;
    const auto add = [&members](pid_t process) {
        if (std::find(members.begin(), members.end(), process) == members.end()) {
            members.push_back(process);
        }
    };
    const std::vector<pid_t> listening = platform::listeningProcesses(directory);
    const auto isThere = [&](pid_t process) {
        return platform::processStart(process) ||
               std::find(listening.begin(), listening.end(), process) != listening.end();
    };
    const auto claimant = platform::overlayClaimant(directory);
    if (claimant && isThere(*claimant)) {
        add(*claimant);
    }
    std::for_each(listening.begin(), listening.end(), add);
    for (const platform::OverlayNote& note : platform::readOverlayNotes(directory)) {
        if (isThere(note.process)) {
            add(note.process);
        }
    }
    std::for_each(inheritors.begin(), inheritors.end(), add);
    if (members.empty() || !platform::hasLauncherEnded(directory)) {
        add(platform::runProcess(directory));
    }
    return members;
}

}  // namespace

std::string userDirectory(std::string& error) {
    std::string path = platform::runtimeDirectoryPath();
    while (isRunDirectory(path)) {
        path = fs::path(path).parent_path();
    }
    const platform::RuntimeDirectory directory = platform::openRuntimeDirectory(path);
    error = directory.error;
    return directory.path;
}

bool isRunDirectory(const std::string& directory) {
    return platform::runProcess(directory) != 0;
}

bool hasRunEnded(const std::string& directory) {
    return !platform::isRunFolder(directory) ||
           (platform::isRunOver(directory) && processesByDirectory()[directory].empty());
}

std::vector<Run> findRuns(const std::string& userDirectory) {
    std::vector<Run> runs;
    std::map<std::string, std::vector<pid_t>> inheritors;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(userDirectory, ignored)) {
        const std::string directory = entry.path();
        if (!platform::isRunFolder(directory)) {
            continue;
        }
        if (inheritors.empty()) {
            inheritors = processesByDirectory();
        }
        const std::vector<pid_t>& own = inheritors[directory];
        if (!platform::isRunOver(directory) || !own.empty()) {
            std::vector<pid_t> members = findMembers(directory, own);
            const pid_t first = members.front();
            runs.push_back({directory, first, std::move(members)});
        }
    }
    std::sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) { return a.process < b.process; });
    return runs;
}

}  // namespace control
