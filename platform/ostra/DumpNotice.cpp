#include "ostra/DumpNotice.h"

#include "io/PlainFile.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <sstream>

namespace platform {

namespace {

/// In the order of DumpNotice::State.
constexpr std::array<const char*, 3> STATES = {"running", "done", "failed"};
constexpr std::size_t MAX_SIZE = 16384;

std::string noticePath(const std::string& directory, pid_t process) {
    return directory + "/dump." + std::to_string(process);
}

}  // namespace

// The first line has the number, the state, the frames and the error. Everything after it is the folder,
// because a folder's name may contain any character.
void writeDumpNotice(const std::string& directory, const DumpNotice& notice) {
    if (directory.empty()) {
        return;
    }
    std::string error = notice.error;
    std::replace(error.begin(), error.end(), '\n', ' ');
    const char* const state = STATES[static_cast<std::size_t>(notice.state)];
    replaceFile(noticePath(directory, getpid()), std::to_string(notice.number) + ' ' + state + ' ' +
                                                     std::to_string(notice.frames) + ' ' + error + '\n' +
                                                     notice.folder);
}

void removeDumpNotice(const std::string& directory, pid_t process) {
    unlink(noticePath(directory, process).c_str());
}

std::optional<DumpNotice> readDumpNotice(const std::string& directory, pid_t process) {
    std::string text;
    return readPlainFile(noticePath(directory, process), text, MAX_SIZE) == 0 ? parseDumpNotice(text)
                                                                              : std::nullopt;
}

std::optional<DumpNotice> parseDumpNotice(const std::string& text) {
    DumpNotice notice;
    std::string state;
    std::istringstream stream(text);
    stream >> notice.number >> state >> notice.frames;
    const auto* const known = std::find(STATES.begin(), STATES.end(), state);
    if (stream.get() != ' ' || known == STATES.end() || !std::getline(stream, notice.error) || stream.eof()) {
        return std::nullopt;
    }
    notice.state = static_cast<DumpNotice::State>(known - STATES.begin());
    std::getline(stream, notice.folder, '\0');
    return notice;
}

}  // namespace platform
