#include "ostra/ProcessChannel.h"

#include "ostra/HelperThread.h"
#include "ostra/LogTag.h"
#include "ostra/PerProcess.h"
#include "ostra/PictureRequest.h"
#include "ostra/ProcessSocket.h"
#include "ostra/logs/LogControl.h"

#include <android/log.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <new>
#include <string_view>
#include <utility>

namespace platform {

namespace {

constexpr std::chrono::milliseconds LISTENER_PATIENCE{200};
constexpr unsigned MAX_FAILURES = 6;
constexpr std::chrono::milliseconds FIRST_PAUSE{500};  // doubled by each failure

}  // namespace

std::vector<Ostra::KeyEvent> ProcessChannel::takeKeys() {
    std::vector<Ostra::KeyEvent> keys;
    if (mIsIdle.load(std::memory_order_relaxed)) {
        return keys;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    openLocked();
    mIsIdle.store(mIsOpenSettled, std::memory_order_relaxed);
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
        path = picturePath(mSocket.directory(), getpid());
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
    const auto now = std::chrono::steady_clock::now();
    if (mIsOpenSettled || (mFailures > 0 && now < mNextAttempt)) {
        return;
    }
    const std::string error = open();
    if (!error.empty() && mFailures == 0) {
        __android_log_print(ANDROID_LOG_ERROR, TAG, "Key events cannot be received: %s", error.c_str());
    }
    mFailures += error.empty() ? 0 : 1;
    mIsOpenSettled = error.empty() || mFailures == MAX_FAILURES;
    mNextAttempt = now + FIRST_PAUSE * (1U << mFailures);
}

/// Returns an empty text, or why nothing can be received.
std::string ProcessChannel::open() {
    std::string error;
    try {
        error = mSocket.open();
        if (error.empty() && !startHelperThread("ostra-keys", [this] { receive(); })) {
            error = "no thread can be started";
        }
    } catch (const std::bad_alloc&) {
        error = "out of memory";
    }
    if (!error.empty()) {
        mSocket.close();
    }
    return error;
}

void ProcessChannel::receive() {
    for (;;) {
        try {
            receiveOne();
        } catch (const std::bad_alloc&) {
            warnOnce(mIsLossWarned, "A message is lost, and more may be: out of memory");
        }
    }
}

void ProcessChannel::receiveOne() {
    std::array<char, MAX_MESSAGE_SIZE> text = {};
    const ssize_t size = mSocket.receive(text.data(), text.size());
    if (size < 0) {
        return;
    }
    const auto length = static_cast<std::size_t>(size);
    const auto message =
        length <= text.size() ? decodeMessage(std::string_view(text.data(), length)) : std::nullopt;
    if (message) {
        handle(*message);
    } else {
        warnOnce(mIsGarbageWarned, "A message that is not understood was ignored, and more may be");
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
        case ProcessMessage::Kind::LOG:
            if (LogControl* const logs = PerProcess<LogControl>::find()) {
                logs->request(message.log);
            }
            break;
        case ProcessMessage::Kind::FIGURES:
            answerFigures(message.asker);
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
        try {
            const std::function<void()> listener = mListeners[i];
            lock.unlock();
            listener();
        } catch (...) {
            warnOnce(mIsListenerWarned, "A listener for the background failed, and more may");
        }
        if (!lock.owns_lock()) {
            lock.lock();
        }
    }
    mListeningThread = std::thread::id();
    mListenersDone.notify_all();
}

void ProcessChannel::answerFigures(std::uint32_t asker) {
    FigureExchange* exchange = mFigures.load(std::memory_order_relaxed);
    if (exchange == nullptr) {
        exchange = new FigureExchange;
        mFigures.store(exchange, std::memory_order_release);
    }
    exchange->ask();
    const FigureReport& report = exchange->newest();
    mSocket.send(askerPath(mSocket.directory(), asker), &report, sizeof(report));
}

void ProcessChannel::warnOnce(bool& isWarned, const char* text) {
    if (!isWarned) {
        isWarned = true;
        __android_log_print(ANDROID_LOG_WARN, TAG, "%s", text);
    }
}

void ProcessChannel::onForked() {
    // If it stayed open here, the socket would live on without a reader.
    mSocket.forget();
}

void ProcessChannel::onExit() {
    std::unique_lock<std::mutex> lock(mMutex);
    mIsClosing = true;
    mSocket.remove();
    // A listener may itself have called exit().
    if (mListeningThread != std::this_thread::get_id()) {
        mListenersDone.wait_for(lock, LISTENER_PATIENCE,
                                [this] { return mListeningThread == std::thread::id(); });
    }
}

}  // namespace platform
