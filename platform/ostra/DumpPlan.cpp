#include "ostra/DumpPlan.h"

#include "io/PlainFile.h"
#include "ostra/DumpPlace.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <utility>

namespace platform {

namespace {

constexpr std::size_t MAX_COMMAND_LINE = 4096;
constexpr std::size_t MAX_PROGRAM_NAME = 64;
constexpr int MAX_FOLDERS_A_SECOND = 1000;
constexpr mode_t FOLDER_MODE = 0755;

/// The program's name, made of characters that no shell treats specially.
std::string programName() {
    std::string name;
    readPlainFile("/proc/self/cmdline", name, MAX_COMMAND_LINE);
    name.erase(std::min(name.find('\0'), name.size()));
    // A program that rewrites its command line leaves all of it in one text.
    name.erase(std::min(name.find(" -"), name.size()));
    name.erase(0, name.find_last_of("/\\") + 1);
    name.resize(std::min(name.size(), MAX_PROGRAM_NAME));
    for (char& symbol : name) {
        const bool isPlain = (symbol >= 'a' && symbol <= 'z') || (symbol >= 'A' && symbol <= 'Z') ||
                             (symbol >= '0' && symbol <= '9') || symbol == '.' || symbol == '_' ||
                             symbol == '-';
        symbol = isPlain ? symbol : '_';
    }
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

DumpPlan planDump(std::uint32_t number) {
    DumpPlace place = findDumpPlace();
    DumpPlan plan;
    plan.number = number;
    plan.base = std::filesystem::absolute(place.base).lexically_normal().string();
    while (plan.base.size() > 1 && plan.base.back() == '/') {
        plan.base.pop_back();
    }
    plan.name = programName() + '-' + localTime() + '-';
    plan.runtimeDirectory = std::move(place.noticeDirectory);
    return plan;
}

std::string makeDumpFolder(const DumpPlan& plan, std::string& error) {
    std::error_code failure;
    std::filesystem::create_directories(plan.base, failure);
    if (failure) {
        error = plan.base + ": " + failure.message();
        return {};
    }
    std::string folder;
    int result = 0;
    for (int i = 1; i <= MAX_FOLDERS_A_SECOND; ++i) {
        folder = plan.base + '/' + plan.name + std::to_string(i);
        result = mkdir(folder.c_str(), FOLDER_MODE) == 0 ? 0 : errno;
        if (result != EEXIST) {
            break;
        }
    }
    if (result == 0) {
        return folder;
    }
    error = folder + ": " + std::generic_category().message(result);
    return {};
}

}  // namespace platform
