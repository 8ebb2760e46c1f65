#include "run/ProgramFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace control {

namespace {

/// Where execvp() looks when PATH is not set.
std::string defaultPath() {
    std::string path(confstr(_CS_PATH, nullptr, 0), '\0');
    confstr(_CS_PATH, path.data(), path.size());
    path.pop_back();
    return path;
}

}  // namespace

ProgramFile findProgram(const std::string& name) {
    ProgramFile program;
    const auto look = [&](const std::string& path) {
        struct stat status = {};
        if (stat(path.c_str(), &status) != 0) {
            program.result = errno == EACCES ? NOT_EXECUTABLE : program.result;
            return false;
        }
        const bool isProgram = S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0;
        program = {path, isProgram ? SUCCESS : NOT_EXECUTABLE};
        return isProgram;
    };
    if (name.find('/') != std::string::npos || name.empty()) {
        look(name);
        return program;
    }
    const char* const variable = std::getenv("PATH");  // NOLINT(concurrency-mt-unsafe): the only thread
    const std::string folders = (variable == nullptr ? defaultPath() : variable) + ':';
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = folders.find(':', begin)) != std::string::npos; begin = end + 1) {
        // An empty folder means the working directory.
        std::string path = end == begin ? "." : folders.substr(begin, end - begin);
        path.append(1, '/').append(name);
        if (look(path)) {
            break;
        }
    }
    return program;
}

}  // namespace control
