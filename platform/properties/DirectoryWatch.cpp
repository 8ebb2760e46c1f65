#include "properties/DirectoryWatch.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstring>

namespace platform {

namespace {

constexpr long PERIOD_MS = 250;
/// The program may close the descriptor between our check and the sleep, which then waits for something else.
/// So no sleep lasts longer than this.
constexpr long LONGEST_SLEEP_MS = 10000;
constexpr long MS_PER_SECOND = 1000;
constexpr long NS_PER_MS = 1000000;

/// The watches of this process. A forked child closes them; one that found no free place stays open there.
std::array<std::atomic<const DirectoryWatch*>, 8> gWatches{};

/// Returns what the kernel says only of this watch's descriptor; empty when it is no watch. Allocates
/// nothing.
WatchIdentity identityOf(int descriptor) {
    std::array<char, 64> path{};
    // The thread's own, since a thread may have a descriptor table of its own.
    std::snprintf(path.data(), path.size(), "/proc/thread-self/fdinfo/%d", descriptor);
    WatchIdentity identity{};
    std::array<char, 512> text{};
    const int file = open(path.data(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return identity;
    }
    const ssize_t size = read(file, text.data(), text.size() - 1);
    close(file);
    const char* const line = size <= 0 ? nullptr : std::strstr(text.data(), "\ninotify wd:");
    if (line != nullptr) {
        std::snprintf(identity.data(), identity.size(), "%s", line);
    }
    return identity;
}

/// The milliseconds until the deadline, at most `limit`.
int timeUntil(const timespec* deadline, long limit) {
    if (deadline == nullptr) {
        return static_cast<int>(limit);
    }
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const auto seconds = std::clamp<time_t>(deadline->tv_sec - now.tv_sec, -1, limit / MS_PER_SECOND + 1);
    // Rounded up, so that the deadline has passed when the sleep ends.
    const long ms =
        static_cast<long>(seconds) * MS_PER_SECOND + (deadline->tv_nsec - now.tv_nsec) / NS_PER_MS + 1;
    return static_cast<int>(std::clamp(ms, 0L, limit));
}

}  // namespace

DirectoryWatch::DirectoryWatch(const std::string& directory) {
    static const int isRegistered = pthread_atfork(nullptr, nullptr, closeInherited);
    static_cast<void>(isRegistered);
    mDescriptor = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    if (mDescriptor < 0) {
        return;
    }
    if (inotify_add_watch(mDescriptor, directory.c_str(),
                          IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR) >= 0) {
        mIdentity = identityOf(mDescriptor);
    }
    if (mIdentity == WatchIdentity{}) {
        close(mDescriptor);
        mDescriptor = -1;
        return;
    }
    for (auto& place : gWatches) {
        const DirectoryWatch* none = nullptr;
        if (place.compare_exchange_strong(none, this, std::memory_order_acq_rel)) {
            break;
        }
    }
}

DirectoryWatch::~DirectoryWatch() {
    for (auto& place : gWatches) {
        const DirectoryWatch* self = this;
        place.compare_exchange_strong(self, nullptr, std::memory_order_acq_rel);
    }
    if (isSound()) {
        close(mDescriptor);
    }
}

void DirectoryWatch::sleep(const timespec* deadline) const {
    if (!isSound()) {
        sleepWithoutWatch(deadline);
        return;
    }
    pollfd watched = {mDescriptor, POLLIN, 0};
    poll(&watched, 1, timeUntil(deadline, LONGEST_SLEEP_MS));
    if ((watched.revents & ~POLLIN) != 0) {
        sleepWithoutWatch(deadline);  // somebody closed it meanwhile; without a pause we would spin
    }
}

void DirectoryWatch::sleepWithoutWatch(const timespec* deadline) {
    poll(nullptr, 0, timeUntil(deadline, PERIOD_MS));
}

bool DirectoryWatch::isSound() const {
    return mDescriptor >= 0 && identityOf(mDescriptor) == mIdentity;
}

void DirectoryWatch::closeInherited() {
    for (auto& place : gWatches) {
        const DirectoryWatch* const watch = place.exchange(nullptr);
        if (watch != nullptr && watch->isSound()) {
            close(watch->mDescriptor);
        }
    }
}

}  // namespace platform
