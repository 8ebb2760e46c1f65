#include "RunDirectories.h"

#include "ProcessInfo.h"
#include "ostra/ProcessSocket.h"
#include "properties/RuntimeDirectory.h"

#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <optional>
#include <system_error>

namespace control {

namespace {

namespace fs = std::filesystem;

const std::string NAME_BEGIN = "run-";
/// No process has a larger number.
constexpr pid_t MAX_PROCESS = 4194304;

std::string nameFor(pid_t process) {
    return NAME_BEGIN + std::to_string(process) + '-' + std::to_string(startTime(process).value_or(0));
}

/// The process in a name that nameFor() made, whether or not it still runs.
std::optional<pid_t> processOf(const std::string& name) {
    const std::size_t end = name.rfind('-');
    if (name.compare(0, NAME_BEGIN.size(), NAME_BEGIN) != 0 || end < NAME_BEGIN.size() ||
        end + 1 == name.size() || name.find_first_not_of("0123456789", end + 1) != std::string::npos) {
        return std::nullopt;
    }
    return toProcess(name.substr(NAME_BEGIN.size(), end - NAME_BEGIN.size()));
}

/// The first process that has each runtime directory in its environment.
std::map<std::string, pid_t> directoriesInUse() {
    std::map<std::string, pid_t> directories;
    for (const pid_t process : allProcesses()) {
        directories.emplace(environmentVariable(process, "KORDANIX_RUNTIME_DIR").value_or(""), process);
    }
    return directories;
}

}  // namespace

std::string userDirectory(std::string& error) {
    platform::RuntimeDirectory directory = platform::openRuntimeDirectory();
    error = directory.error;
    while (isRunDirectory(directory.path)) {
        directory.path = fs::path(directory.path).parent_path();
    }
    return directory.path;
}

bool isRunDirectory(const std::string& directory) {
    return processOf(fs::path(directory).filename()).has_value();
}

std::vector<Run> findRuns(const std::string& userDirectory) {
    std::vector<std::string> directories;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(userDirectory, ignored)) {
        if (isRunDirectory(entry.path())) {
            directories.push_back(entry.path());
        }
    }
    std::vector<Run> runs;
    // Only then, so that no process of a directory that was seen can have been missed.
    const std::map<std::string, pid_t> inUse =
        directories.empty() ? std::map<std::string, pid_t>() : directoriesInUse();
    for (const std::string& directory : directories) {
        const std::string name = fs::path(directory).filename();
        const pid_t process = processOf(name).value_or(0);
        const auto user = inUse.find(directory);
        if (user != inUse.end()) {
            runs.push_back({directory, user->second});
        } else if (name == nameFor(process)) {
            runs.push_back({directory, process});
        } else {
            removeRunDirectory(directory);
        }
    }
    std::sort(runs.begin(), runs.end(), [](const Run& a, const Run& b) { return a.process < b.process; });
    return runs;
}

std::string makeRunDirectory(const std::string& userDirectory, std::string& error) {
    std::string directory = userDirectory + '/' + nameFor(getpid());
    if (platform::processSocketPath(directory, MAX_PROCESS).size() >= sizeof(sockaddr_un::sun_path)) {
        error = "the path of the runtime directory " + userDirectory +
                " is too long for the sockets in it; KORDANIX_RUNTIME_DIR can name another";
        return {};
    }
    if (mkdir(directory.c_str(), S_IRWXU) != 0) {
        error = "cannot make " + directory + ": " + std::generic_category().message(errno);
        return {};
    }
    return directory;
}

void removeRunDirectory(const std::string& directory) {
    std::error_code ignored;
    fs::remove_all(directory, ignored);
}

}  // namespace control
