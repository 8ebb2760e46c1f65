#include "keys/KeysWatch.h"

#include "keys/RunKeys.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <exception>
#include <utility>

namespace control {

KeysWatch::KeysWatch(std::string folder, platform::RunHold& hold) : mFolder(std::move(folder)), mHold(hold) {
    mDescriptor = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    if (mDescriptor >= 0 && inotify_add_watch(mDescriptor, mFolder.c_str(), IN_MOVED_TO | IN_ONLYDIR) < 0) {
        giveUp();
    }
    listenIfWanted();
}

void KeysWatch::attend() {
    std::array<char, 4096> events = {};
    ssize_t size = 0;
    while ((size = read(mDescriptor, events.data(), events.size())) > 0) {
    }
    const bool isBroken = size == 0 || errno != EAGAIN;
    try {
        listenIfWanted();
    } catch (const std::exception&) {
        // No memory now; the next change is another chance.
    }
    if (isBroken) {
        giveUp();
    }
}

void KeysWatch::listenIfWanted() {
    if (areKeysOn()) {
        giveUp();  // first, so that the listener does not get it
        mListener.emplace(listenForRun(mFolder, mHold));
    }
}

void KeysWatch::giveUp() {
    if (mDescriptor >= 0) {
        close(std::exchange(mDescriptor, -1));
    }
}

std::string KeysWatch::finish() {
    return mListener ? mListener->finish(std::chrono::milliseconds(0)) : std::string();
}

}  // namespace control
