#include "ostra/OwnSocket.h"

#include "ostra/ProcessSocket.h"
#include "properties/RuntimeDirectory.h"

#include <android/log.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace platform {

namespace {

constexpr time_t WAIT_S = 1;
constexpr std::chrono::seconds PAUSE{1};

}  // namespace

std::string OwnSocket::open() {
    std::string error;
    if (const std::string* const directory = ownRuntimeDirectory(error)) {
        mDirectory = *directory;
        mPath = processSocketPath(mDirectory, getpid());
        mSocket = OwnDescriptor(openProcessSocket(mDirectory, error));
    }
    if (error.empty()) {
        mIsInRun = isRunFolder(mDirectory);
        mRun.take(mDirectory);
        limitWait();
    }
    return error;
}

void OwnSocket::close() {
    if (mSocket.get() >= 0) {
        unlink(mPath.c_str());
    }
    mSocket.close();
    mRun = {};
}

// receive() has to return now and then to take the lock on the run again. The socket itself stays open while
// we wait for it, even if somebody closes its number.
void OwnSocket::limitWait() const {
    if (mIsInRun) {
        const timeval wait = {WAIT_S, 0};
        setsockopt(mSocket.get(), SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof(wait));
    }
}

bool OwnSocket::reopen() {
    std::string error;
    mSocket = OwnDescriptor(openProcessSocket(mDirectory, error));
    if (!error.empty()) {
        if (!mIsFailureLogged) {
            mIsFailureLogged = true;
            __android_log_print(ANDROID_LOG_ERROR, "Ostra", "Key events are not received any more: %s",
                                error.c_str());
        }
        return false;
    }
    limitWait();
    if (mIsRemoved) {
        unlink(mPath.c_str());
    }
    return true;
}

ssize_t OwnSocket::receive(char* buffer, std::size_t size) {
    if (mSocket.get() < 0 && !reopen()) {
        std::this_thread::sleep_for(PAUSE);
        return -1;
    }
    const ssize_t received = recv(mSocket.get(), buffer, size, MSG_TRUNC);
    if (received < 0 && errno != EINTR && errno != EAGAIN) {
        std::this_thread::sleep_for(PAUSE);
    }
    mRun.renew();
    return received;
}

void OwnSocket::send(const std::string& path, const void* bytes, std::size_t size) const {
    const int socket = mSocket.get();
    if (socket >= 0) {
        sendTo(socket, path, bytes, size);
    }
}

void OwnSocket::remove() {
    mIsRemoved = true;
    if (!mPath.empty()) {
        unlink(mPath.c_str());
    }
}

void OwnSocket::forget() {
    mSocket.close();
    mRun.forget();
}

}  // namespace platform
