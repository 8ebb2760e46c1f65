#include "processes/Addressing.h"

#include "Diagnostic.h"
#include "ostra/ProcessSocket.h"
#include "processes/ProcessInfo.h"
#include "processes/RunDirectories.h"
#include "properties/RuntimeDirectory.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>

namespace control {

namespace {

/// Says why nobody can be in the runtime directory; empty when somebody may be.
std::string emptinessOf(const std::string& directory) {
    return isRunDirectory(directory) && hasRunEnded(directory) ? "the run in " + directory + " has ended"
                                                               : std::string();
}

/// Returns the runtime directory of a process; when it is unknown, an empty text with the reason in `error`.
std::string directoryOf(pid_t process, std::string& error) {
    const std::string who = "process " + std::to_string(process);
    const std::string user = userDirectory(error);
    if (user.empty()) {
        return {};
    }
    for (const Run& run : findRuns(user)) {
        if (std::find(run.members.begin(), run.members.end(), process) != run.members.end()) {
            return run.directory;
        }
    }
    if (!startTime(process)) {
        error = startTime(getpid()) ? "there is no " + who
                                    : "/proc cannot be read, so that " + who + " is not to be found";
        return {};
    }
    const auto directory = environmentVariable(process, "KORDANIX_RUNTIME_DIR");
    if (!directory) {
        error = "the environment of " + who + " cannot be read: it belongs to another user, or is protected";
        return {};
    }
    error = emptinessOf(*directory);
    return directory->empty() ? user : *directory;
}

std::string line(pid_t process) {
    return "\n  " + std::to_string(process) + ' ' + processName(process);
}

/// Returns the only program that was started with 'run'; nothing when there is none, or when several programs
/// could be meant; then `error` names them.
std::optional<Run> onlyRun(const std::string& directory, std::string& error) {
    const std::vector<Run> runs = findRuns(directory);
    const std::vector<pid_t> others = platform::listeningProcesses(directory);
    if (runs.size() == 1 && others.empty()) {
        return runs.front();
    }
    if (runs.empty()) {
        return std::nullopt;
    }
    error = "several programs could be meant:";
    for (const Run& run : runs) {
        error += line(run.process);
    }
    for (const pid_t other : others) {
        error += line(other);
    }
    error += "\n'kordanixctl --process PID ...' chooses one; KORDANIX_RUNTIME_DIR=" + directory +
             " stands for all that were not started with 'kordanixctl run'";
    return std::nullopt;
}

}  // namespace

ExitCode chooseRuntimeDirectory(std::optional<pid_t> process, std::ostream& err) {
    std::string error;
    std::string directory;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread changes the environment
    const char* const chosen = std::getenv("KORDANIX_RUNTIME_DIR");
    if (process) {
        directory = directoryOf(*process, error);
    } else if (chosen != nullptr && *chosen != '\0') {
        error = emptinessOf(platform::runtimeDirectoryPath());
    } else {
        std::string ignored;  // the verb will report it, if it needs the directory
        const std::string user = userDirectory(ignored);
        const std::optional<Run> run = user.empty() ? std::nullopt : onlyRun(user, error);
        directory = run ? run->directory : std::string();
    }
    if (!directory.empty()) {
        platform::changeRuntimeDirectory(directory);
    }
    return failUnlessEmpty(error, err);
}

std::vector<pid_t> recipients(const std::string& directory, std::optional<pid_t> process) {
    std::vector<pid_t> listening = platform::listeningProcesses(directory);
    const bool isOnlyListener = listening.size() == 1 && isRunDirectory(directory);
    if (!process || isOnlyListener) {
        return listening;
    }
    return {*process};
}

}  // namespace control
