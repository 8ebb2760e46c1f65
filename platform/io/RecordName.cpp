#include "io/RecordName.h"

#include "io/PlainFile.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace platform {

namespace {

constexpr std::size_t MAX_COMMAND_LINE = 4096;
constexpr std::size_t MAX_PROGRAM_NAME = 64;

/// The program's name, made of characters that no shell treats specially.
std::string programName(pid_t process) {
    const std::string folder = process == 0 ? "self" : std::to_string(process);
    std::string name;
    readPlainFile("/proc/" + folder + "/cmdline", name, MAX_COMMAND_LINE);
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

std::string recordName(pid_t process) {
    return programName(process) + '-' + localTime();
}

}  // namespace platform
