#include "overlays/LogsFolder.h"

#include "processes/ProcessInfo.h"
#include "properties/RuntimeDirectory.h"
#include "runs/LogPlan.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <ctime>
#include <filesystem>
#include <system_error>

namespace control {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t MAX_NAME = 64;
constexpr int MAX_FILES_A_SECOND = 1000;

/// The program's name, of characters that no shell treats specially.
std::string plainName(pid_t process) {
    std::string name = processName(process);
    name.erase(0, name.find_last_of("/\\") + 1);
    name.resize(std::min(name.size(), MAX_NAME));
    std::replace_if(
        name.begin(), name.end(),
        [](unsigned char symbol) {
            return symbol > 127 ||
                   (std::isalnum(symbol) == 0 && symbol != '.' && symbol != '_' && symbol != '-');
        },
        '_');
    return name.empty() || name.front() == '.' || name.front() == '-' ? "program" + name : name;
}

std::string localTime() {
    const std::time_t now = std::time(nullptr);
    std::tm time = {};
    localtime_r(&now, &time);
    std::array<char, 32> text = {};
    std::strftime(text.data(), text.size(), "%Y%m%d-%H%M%S", &time);
    return text.data();
}

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
    const std::string beginning = folder + '/' + plainName(process) + '-' + localTime() + '-';
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
