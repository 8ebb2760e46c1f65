#include "runs/RunFolder.h"

#include "io/PlainFile.h"
#include "io/ProcessStart.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <string_view>
#include <system_error>
#include <utility>

namespace platform {

namespace {

constexpr std::string_view NAME_BEGIN = "run-";
constexpr std::string_view MARKER_TEXT = "This folder belongs to a program that kordanixctl started.\n";
/// The longest name of a file that the processes of a run create in their folder.
constexpr std::string_view LONGEST_SOCKET = "/process.4194304.sock";
/// Whoever tests whether a marker is locked holds the lock for a moment, so taking it once is not enough.
constexpr int LOCK_TRIES = 4;
constexpr useconds_t LOCK_PAUSE_US = 500;
/// How deep removeContents() goes into folders.
constexpr int MAX_DEPTH = 8;

std::string messageOf(int error) {
    return std::generic_category().message(error);
}

bool tryLock(int file, int operation) {
    for (int i = 0; i < LOCK_TRIES; ++i) {
        if (flock(file, operation | LOCK_NB) == 0) {
            return true;
        }
        if (errno != EWOULDBLOCK && errno != EINTR) {
            return false;
        }
        usleep(LOCK_PAUSE_US);
    }
    return false;
}

/// Opens the folder if it is this user's and not a link; otherwise returns -1.
int openFolder(const std::string& folder) {
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    struct stat status = {};
    if (descriptor >= 0 && (fstat(descriptor, &status) != 0 || status.st_uid != geteuid())) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

/// Opens the marker if we wrote it; otherwise returns -1.
int openMarker(const std::string& folder) {
    const int directory = openFolder(folder);
    if (directory < 0) {
        return -1;
    }
    close(directory);
    const int marker = openPlainFile(folder + '/' + RUN_MARKER, O_RDONLY);
    if (marker < 0) {
        return -1;
    }
    struct stat status = {};
    std::string text(MARKER_TEXT.size() + 1, '\0');
    const bool isOurs =
        fstat(marker, &status) == 0 && status.st_uid == geteuid() &&
        pread(marker, text.data(), text.size(), 0) == static_cast<ssize_t>(MARKER_TEXT.size()) &&
        text.compare(0, MARKER_TEXT.size(), MARKER_TEXT) == 0;
    if (!isOurs) {
        close(marker);
        return -1;
    }
    return marker;
}

/// Removes everything in an open folder, except the marker in the run's own. Never follows a link out of it.
/// Closes the descriptor. False when something is left.
bool removeContents(int directory, int depth) {
    DIR* const entries = fdopendir(directory);
    if (entries == nullptr) {
        close(directory);
        return false;
    }
    bool isEmpty = true;
    // No other thread has this stream.
    while (const dirent* const entry = readdir(entries)) {  // NOLINT(concurrency-mt-unsafe)
        const std::string_view name(entry->d_name);
        if (name == "." || name == ".." || (depth == 0 && name == RUN_MARKER) ||
            unlinkat(directory, entry->d_name, 0) == 0) {
            continue;
        }
        const int inner = openat(directory, entry->d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (inner >= 0 && depth < MAX_DEPTH) {
            removeContents(inner, depth + 1);
        } else if (inner >= 0) {
            close(inner);
        }
        isEmpty = unlinkat(directory, entry->d_name, AT_REMOVEDIR) == 0 && isEmpty;
    }
    closedir(entries);
    return isEmpty;
}

/// Reads the process and its start from the name of a run's folder. False for any other name.
bool readName(const std::string& folder, pid_t& process, std::uint64_t& start) {
    std::string_view name(folder);
    name.remove_prefix(name.rfind('/') + 1);
    if (name.substr(0, NAME_BEGIN.size()) != NAME_BEGIN) {
        return false;
    }
    const char* const end = name.data() + name.size();
    const auto first = std::from_chars(name.data() + NAME_BEGIN.size(), end, process);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != '-' || process <= 0) {
        return false;
    }
    const auto second = std::from_chars(first.ptr + 1, end, start);
    return second.ec == std::errc() && second.ptr == end;
}

}  // namespace

std::string makeRunFolder(const std::string& userDirectory, std::string& error) {
    const auto start = processStart(getpid());
    if (!start) {
        error = "/proc does not show this process, which a run's folder is named after";
        return {};
    }
    std::string folder = userDirectory + '/' + std::string(NAME_BEGIN) + std::to_string(getpid()) + '-' +
                         std::to_string(*start);
    if (folder.size() + LONGEST_SOCKET.size() >= sizeof(sockaddr_un::sun_path)) {
        error = "the path of the runtime directory " + userDirectory +
                " is too long for the sockets in it; KORDANIX_RUNTIME_DIR can name another";
        return {};
    }
    if (mkdir(folder.c_str(), S_IRWXU) != 0) {
        error = "cannot make " + folder + ": " + messageOf(errno);
        return {};
    }
    const int failure = replaceFile(folder + '/' + RUN_MARKER, MARKER_TEXT);
    if (failure != 0) {
        error = "cannot write " + folder + '/' + RUN_MARKER + ": " + messageOf(failure);
        rmdir(folder.c_str());
        return {};
    }
    return folder;
}

pid_t runProcess(const std::string& folder) {
    pid_t process = 0;
    std::uint64_t start = 0;
    return readName(folder, process, start) ? process : 0;
}

bool isRunFolder(const std::string& folder) {
    const int marker = runProcess(folder) == 0 ? -1 : openMarker(folder);
    if (marker >= 0) {
        close(marker);
    }
    return marker >= 0;
}

bool isRunHeld(const std::string& folder) {
    const int marker = openMarker(folder);
    if (marker < 0) {
        return false;
    }
    const bool isFree = tryLock(marker, LOCK_EX);
    close(marker);
    return !isFree;
}

bool hasLauncherEnded(const std::string& folder) {
    pid_t process = 0;
    std::uint64_t start = 0;
    return readName(folder, process, start) && hasSurelyEnded(process, start);
}

bool isRunOver(const std::string& folder) {
    return hasLauncherEnded(folder) && !isRunHeld(folder);
}

bool removeEndedRun(const std::string& folder) {
    if (runProcess(folder) != getpid() && !hasLauncherEnded(folder)) {
        return false;
    }
    const int marker = openMarker(folder);
    if (marker < 0) {
        return false;
    }
    bool isGone = false;
    // Holds the lock to the end, so that nobody starts to use a folder that we are removing. Removes the
    // marker last: a folder that cannot be emptied now can be emptied later.
    if (tryLock(marker, LOCK_EX)) {
        const int directory = openFolder(folder);
        isGone = directory >= 0 && removeContents(directory, 0) &&
                 unlink((folder + '/' + RUN_MARKER).c_str()) == 0 && rmdir(folder.c_str()) == 0;
    }
    close(marker);
    return isGone;
}

void RunHold::take(const std::string& folder) {
    mFolder = folder;
    mMarker = OwnDescriptor();
    const int marker = runProcess(folder) == 0 ? -1 : openMarker(folder);
    if (marker < 0) {
        return;
    }
    if (tryLock(marker, LOCK_SH)) {
        mMarker = OwnDescriptor(marker);
    } else {
        close(marker);
    }
}

void RunHold::renew() {
    if (!mFolder.empty() && mMarker.get() < 0) {
        take(std::string(mFolder));
    }
}

void RunHold::forget() {
    mMarker.close();
}

}  // namespace platform
