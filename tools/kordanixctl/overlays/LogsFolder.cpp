#include "overlays/LogsFolder.h"

#include "io/RecordName.h"
#include "properties/RuntimeDirectory.h"
#include "runs/LogPlan.h"

#include <filesystem>
#include <system_error>

namespace control {

namespace {

namespace fs = std::filesystem;

constexpr int MAX_FILES_A_SECOND = 1000;

}  // namespace

std::string logsFolder(std::string& error) {
    std::string folder = platform::readLogPlan(platform::openRuntimeDirectory().path).folder;
    folder = folder.empty() ? platform::logsFolder(error) : folder;
    if (folder.empty()) {
        return {};
    }
    std::error_code failure;
    fs::create_directories(folder, failure);
    if (!fs::is_directory(folder)) {
        error = "cannot create " + folder + ": " + failure.message();
        return {};
    }
    return folder;
}

std::string newLogsFile(pid_t process, const std::string& ending, std::string& error) {
    const std::string folder = logsFolder(error);
    if (folder.empty()) {
        return {};
    }
    const std::string beginning = folder + '/' + platform::recordName(process) + '-';
    for (int number = 1; number <= MAX_FILES_A_SECOND; ++number) {
        std::string path = beginning + std::to_string(number);
        path += ending;
        std::error_code failure;
        if (!fs::exists(fs::symlink_status(path, failure))) {
            return path;
        }
    }
    error = folder + ": there are too many files of this second";
    return {};
}

}  // namespace control
