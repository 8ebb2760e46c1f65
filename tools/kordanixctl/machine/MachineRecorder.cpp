#include "machine/MachineRecorder.h"

#include "io/PlainFile.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace control {

namespace {

namespace fs = std::filesystem;

bool beginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

/// The lines that begin with one of the words.
template <std::size_t COUNT>
std::string keepLines(const std::string& text, const std::array<const char*, COUNT>& words) {
    std::istringstream lines(text);
    std::string kept;
    for (std::string line; std::getline(lines, line);) {
        for (const char* const word : words) {
            if (beginsWith(line, word)) {
                kept += line + '\n';
                break;
            }
        }
    }
    return kept;
}

/// The times of a process's stat without its name, parents and groups.
std::string keepTimes(const std::string& text) {
    std::istringstream fields(text.substr(std::min(text.rfind(')') + 1, text.size())));
    std::string kept = "1 (program)";
    std::string field;
    for (int i = 3; fields >> field && i <= 15; ++i) {
        kept += ' ';
        kept += i == 3 || i >= 14 ? field : "0";
    }
    return kept + '\n';
}

/// What of a file is kept.
std::string reduced(const std::string& place, const std::string& text) {
    if (place == "/proc/self/stat") {
        return keepTimes(text);
    }
    if (place == "/proc/self/status") {
        return keepLines(text, std::array{"VmRSS:"});
    }
    if (place == "/proc/self/smaps_rollup") {
        return keepLines(text, std::array{"Pss:", "Rss:"});
    }
    if (place == "/proc/stat") {
        return keepLines(text, std::array{"cpu"});
    }
    if (place == "/proc/meminfo") {
        return keepLines(text, std::array{"MemTotal:", "MemFree:", "MemAvailable:"});
    }
    if (beginsWith(place, "/proc/self/fdinfo/")) {
        return keepLines(
            text, std::array{"pos:", "flags:", "pdev:", "pasid:", "vram mem:", "gtt mem:", "drm-driver:",
                             "drm-pdev:", "drm-client-id:", "drm-engine-", "drm-cycles-", "drm-total-",
                             "drm-maxfreq-", "drm-curfreq-", "drm-memory-", "drm-resident-", "drm-shared-"});
    }
    return text;
}

}  // namespace

MachineRecorder::MachineRecorder(std::string folder, pid_t process)
    : mFolder(std::move(folder)),
      mProcess(process == 0 ? std::string() : "/proc/" + std::to_string(process)) {}

sources::FileTree::Watcher MachineRecorder::watcher() {
    return {[this](const std::string& path, const std::string& text) { write(path, text); },
            [this](const std::string& path) { mark(path); },
            [this](const std::string& path, const std::string& target) { link(path, target); }};
}

std::string MachineRecorder::placeFor(const std::string& path) {
    const bool isOfProcess = !mProcess.empty() && beginsWith(path, mProcess + '/');
    return isOfProcess ? "/proc/self" + path.substr(mProcess.size()) : path;
}

void MachineRecorder::write(const std::string& path, const std::string& text) {
    const std::string place = placeFor(path);
    const fs::path file = mFolder + place;
    std::error_code error;
    fs::create_directories(file.parent_path(), error);
    const int result = error ? error.value() : platform::replaceFile(file, reduced(place, text), 0644);
    if (result != 0 && mError.empty()) {
        mError = file.string() + ": " + platform::plainFileError(result);
    }
}

/// Of folders it matters that they are there.
void MachineRecorder::mark(const std::string& path) {
    std::error_code ignored;
    if (fs::is_directory(path, ignored)) {
        fs::create_directories(mFolder + placeFor(path), ignored);
    }
}

void MachineRecorder::link(const std::string& path, const std::string& target) {
    const std::string place = placeFor(path);
    const bool isNode = beginsWith(target, "/dev/dri/") || beginsWith(target, "/dev/nvidia");
    const bool isDriver = fs::path(place).filename() == "driver";
    if (!isNode && !isDriver) {
        return;
    }
    std::error_code ignored;
    fs::create_directories(fs::path(mFolder + place).parent_path(), ignored);
    fs::remove(mFolder + place, ignored);
    fs::create_symlink(isNode ? target : fs::path(target).filename().string(), mFolder + place, ignored);
}

}  // namespace control
