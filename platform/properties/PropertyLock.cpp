#include "properties/PropertyLock.h"

#include "io/PlainFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <thread>

namespace platform {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::microseconds FIRST_PAUSE(100);
constexpr std::chrono::microseconds LONGEST_PAUSE(2000);

/// Returns "process 12 (name)" for the holder of the lock on an open folder; empty when that is not known.
std::string holderOf(int directory) {
    struct stat status = {};
    std::string locks;
    constexpr std::size_t LIMIT = std::size_t{1024} * 1024;
    if (fstat(directory, &status) != 0 || readPlainFile("/proc/locks", locks, LIMIT) != 0) {
        return {};
    }
    std::array<char, 64> place{};
    std::snprintf(place.data(), place.size(), " %02x:%02x:%llu ", major(status.st_dev), minor(status.st_dev),
                  static_cast<unsigned long long>(status.st_ino));
    // A line: "5: FLOCK  ADVISORY  WRITE 1234 fe:00:567 0 EOF".
    const std::size_t end = locks.find(place.data());
    if (end == std::string::npos || end == 0) {
        return {};
    }
    const std::size_t begin = locks.rfind(' ', end - 1) + 1;
    const std::string process = locks.substr(begin, end - begin);
    std::string name;
    if (process == "0" || process.find_first_not_of("0123456789") != std::string::npos ||
        readPlainFile("/proc/" + process + "/comm", name, LIMIT) != 0) {
        return {};
    }
    name.erase(std::min(name.find('\n'), name.size()));
    return "process " + process + " (" + name + ')';
}

}  // namespace

PropertyLock::PropertyLock(const std::string& directory, std::chrono::milliseconds patience) {
    mDirectory = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (mDirectory < 0) {
        mError = "cannot open " + directory + ": " + std::generic_category().message(errno);
        return;
    }
    const Clock::time_point end = Clock::now() + patience;
    std::chrono::microseconds pause = FIRST_PAUSE;
    while (flock(mDirectory, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            mError = "cannot lock " + directory + ": " + std::generic_category().message(errno);
            return;
        }
        if (Clock::now() >= end) {
            mIsBusy = true;
            const std::string holder = patience.count() == 0 ? std::string() : holderOf(mDirectory);
            mError = (holder.empty() ? "another process" : holder) + " has kept the lock of " + directory +
                     " for " + std::to_string(patience.count() / 1000) + " seconds";
            return;
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, LONGEST_PAUSE);
    }
}

PropertyLock::~PropertyLock() {
    if (mDirectory >= 0) {
        // Unlocked explicitly: a child forked meanwhile shares the descriptor, so closing ours would keep the
        // lock.
        if (isHeld()) {
            flock(mDirectory, LOCK_UN);
        }
        close(mDirectory);
    }
}

}  // namespace platform
