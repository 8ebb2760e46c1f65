#include "log/LogOutput.h"

#include "io/PlainFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <string>

namespace platform {
namespace {

/// The file that was standard error when the library was loaded. A program that closes it may later get its
/// number for a file of its own.
struct StandardError {
    struct stat status = {};
    bool isOpen = fstat(STDERR_FILENO, &status) == 0;
};
const StandardError AT_START;

/// Whether we may write to standard error. A terminal, a pipe or a socket with its number is meant for
/// messages. A file may be the program's data, unless it is the one from the start or is open for appending,
/// as logs are.
bool isStandardError() {
    struct stat status = {};
    if (fstat(STDERR_FILENO, &status) != 0) {
        return false;
    }
    const bool isFirst =
        AT_START.isOpen && status.st_dev == AT_START.status.st_dev && status.st_ino == AT_START.status.st_ino;
    return isFirst || !S_ISREG(status.st_mode) || (fcntl(STDERR_FILENO, F_GETFL) & O_APPEND) != 0;
}

int writeToStandardError(std::string_view lines) {
    if (!isStandardError()) {
        return EBADF;
    }
    // A pipe that poll() calls writable takes 4,096 bytes without waiting; we never write more.
    pollfd room = {STDERR_FILENO, POLLOUT, 0};
    if (poll(&room, 1, 0) != 1) {
        return EAGAIN;
    }
    return writeAll(STDERR_FILENO, lines);
}

int appendTo(const std::string& path, std::string_view lines) {
    constexpr bool FOLLOWS_LINK = true;
    const int file = openPlainFile(path, O_WRONLY | O_APPEND | O_CREAT, 0600, FOLLOWS_LINK);
    if (file < 0) {
        return errno;
    }
    const int error = writeAll(file, lines);
    close(file);
    return error;
}

}  // namespace

int writeToLog(std::string_view lines) {
    // Read only once: the application may change its environment later.
    static const char* const name = std::getenv("KORDANIX_LOG_FILE");  // NOLINT(concurrency-mt-unsafe)
    static const std::string& path = *new std::string(name == nullptr ? "" : name);  // also used at exit
    const int error = path.empty() ? 0 : appendTo(path, lines);
    if (!path.empty() && error == 0) {
        return 0;
    }
    static std::atomic<bool> isTold{false};
    if (error != 0 && !isTold.exchange(true)) {
        writeToStandardError("kordanix: " + path + ": " + plainFileError(error) +
                             "; the log goes to standard error\n");
    }
    return writeToStandardError(lines);
}

}  // namespace platform
