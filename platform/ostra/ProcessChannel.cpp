#include "ostra/ProcessChannel.h"

#include "ostra/HelperThread.h"
#include "ostra/PictureRequest.h"
#include "ostra/ProcessSocket.h"
#include "properties/RuntimeDirectory.h"

#include <android/log.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string_view>
#include <system_error>
#include <utility>

namespace platform {

namespace {

constexpr const char* TAG = "Ostra";
constexpr std::chrono::milliseconds EXIT_PATIENCE{200};

}  // namespace

std::vector<Ostra::KeyEvent> ProcessChannel::takeKeys() {
    std::vector<Ostra::KeyEvent> keys;
    if (mIsIdle.load(std::memory_order_relaxed)) {
        return keys;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    openLocked();
    mIsIdle.store(true, std::memory_order_relaxed);
    keys.swap(mPending);
    return keys;
}

std::optional<std::string> ProcessChannel::takePicture() {
    if (!mIsPictureWanted.load(std::memory_order_relaxed)) {
        return std::nullopt;
    }
    std::string path;
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mIsPictureWanted.store(false, std::memory_order_relaxed);
        path = picturePath(mDirectory, getpid());
    }
    return access(path.c_str(), F_OK) == 0 ? std::optional(std::move(path)) : std::nullopt;
}

void ProcessChannel::addListener(std::function<void()> listener) {
    if (!listener) {
        return;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    mListeners.push_back(std::move(listener));
    openLocked();
}

void ProcessChannel::openLocked() {
    if (mIsOpened) {
        return;
    }
    mIsOpened = true;  // also when it fails, so that it is neither tried nor logged with every frame
    const RuntimeDirectory directory = openRuntimeDirectory();
    std::string error = directory.error;
    const int descriptor = error.empty() ? openProcessSocket(directory.path, error) : -1;
    if (descriptor < 0) {
        __android_log_print(ANDROID_LOG_ERROR, TAG, "Key events cannot be received: %s", error.c_str());
        return;
    }
    mDescriptor = descriptor;
    mDirectory = directory.path;
    mPath = processSocketPath(directory.path, getpid());
    if (!startHelperThread("ostra-keys", [this] { receive(); })) {
        __android_log_print(ANDROID_LOG_ERROR, TAG,
                            "Key events cannot be received: no thread can be started");
        unlink(mPath.c_str());
        mPath.clear();
        close(descriptor);
        mDescriptor = -1;
    }
}

void ProcessChannel::receive() {
    char text[MAX_MESSAGE_SIZE];
    while (true) {
        const ssize_t size = recv(mDescriptor, text, sizeof(text), MSG_TRUNC);
        if (size < 0 && errno != EINTR) {
            const std::string error = std::generic_category().message(errno);
            __android_log_print(ANDROID_LOG_ERROR, TAG, "Key events are not received any more: %s",
                                error.c_str());
            return;
        }
        if (size < 0) {
            continue;
        }
        const auto length = static_cast<std::size_t>(size);
        const auto message =
            length <= sizeof(text) ? decodeMessage(std::string_view(text, length)) : std::nullopt;
        if (message) {
            handle(*message);
        } else {
            warnOnce(mIsGarbageWarned, "A message that is not understood was ignored, and more may be");
        }
    }
}

void ProcessChannel::handle(const ProcessMessage& message) {
    switch (message.kind) {
        case ProcessMessage::Kind::KEY:
            addKey(message.key);
            break;
        case ProcessMessage::Kind::BACKGROUND:
            callListeners();
            break;
        case ProcessMessage::Kind::PICTURE:
            mIsPictureWanted.store(true, std::memory_order_relaxed);
            break;
    }
}

void ProcessChannel::addKey(const Ostra::KeyEvent& key) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mPending.size() >= MAX_PENDING) {
        warnOnce(mIsDropWarned, "Key events are dropped, because nobody takes them");
        return;
    }
    mPending.push_back(key);
    mIsIdle.store(false, std::memory_order_relaxed);
}

void ProcessChannel::callListeners() {
    std::unique_lock<std::mutex> lock(mMutex);
    mListeningThread = std::this_thread::get_id();
    // By index and by copy: a listener may add another one.
    for (std::size_t i = 0; i < mListeners.size() && !mIsClosing; ++i) {
        const std::function<void()> listener = mListeners[i];
        lock.unlock();
        listener();
        lock.lock();
    }
    mListeningThread = std::thread::id();
    mListenersDone.notify_all();
}

void ProcessChannel::warnOnce(bool& isWarned, const char* text) {
    if (!isWarned) {
        isWarned = true;
        __android_log_print(ANDROID_LOG_WARN, TAG, "%s", text);
    }
}

void ProcessChannel::onForked() {
    // Left open, it would keep the parent's socket alive without anybody to read it.
    const int descriptor = mDescriptor;
    if (descriptor >= 0) {
        close(descriptor);
    }
}

void ProcessChannel::onExit() {
    std::unique_lock<std::mutex> lock(mMutex);
    mIsClosing = true;
    if (!mPath.empty()) {
        unlink(mPath.c_str());
        mPath.clear();
    }
    // A listener may itself have called exit().
    if (mListeningThread != std::this_thread::get_id()) {
        mListenersDone.wait_for(lock, EXIT_PATIENCE,
                                [this] { return mListeningThread == std::thread::id(); });
    }
}

}  // namespace platform
