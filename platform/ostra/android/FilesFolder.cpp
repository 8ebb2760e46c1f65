#include "ostra/android/FilesFolder.h"

#include "io/PlainFile.h"

#include <unistd.h>

#include <cstdlib>

namespace platform {

namespace {

constexpr const char* OWN_FOLDER = "files/kordanix";
constexpr uid_t IDS_A_USER = 100000;
constexpr std::size_t MAX_COMMAND_LINE = 4096;

}  // namespace

std::string filesFolder(uid_t user, std::string_view commandLine) {
    // A further process of the application is named PACKAGE:NAME.
    const std::string package(commandLine.substr(0, commandLine.find_first_of(std::string_view(":\0", 2))));
    if (package.empty() || package.find('/') != std::string::npos) {
        return OWN_FOLDER;
    }
    return "/data/user/" + std::to_string(user / IDS_A_USER) + '/' + package + '/' + OWN_FOLDER;
}

std::string ownFilesFolder() {
    const char* const directory = std::getenv("KORDANIX_DUMP_DIR");  // NOLINT(concurrency-mt-unsafe)
    if (directory != nullptr && *directory != '\0') {
        return directory;
    }
    std::string commandLine;
    readPlainFile("/proc/self/cmdline", commandLine, MAX_COMMAND_LINE);
    return filesFolder(getuid(), commandLine);
}

}  // namespace platform
