#pragma once

#include "ostra/FigureExchange.h"
#include "ostra/OwnSocket.h"

#include <ostra/Ostra.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace platform {

struct ProcessMessage;

/// Receives messages to this process (see ProcessSocket.h) on a thread of its own, which sleeps until one
/// arrives. The first takeKeys() or addListener() opens the socket. When that fails, an error is logged once,
/// and later calls try again, a few times and with growing pauses. If the application closes the socket, it
/// is opened again (see OwnSocket.h). One per process, see PerProcess.h; any thread.
class ProcessChannel {
public:
    /// The most key events that can wait to be taken. Later ones are dropped until somebody takes these, with
    /// one warning in the log.
    static constexpr std::size_t MAX_PENDING = 4096;

    /// Returns the events since the last call, in arrival order. Takes no lock and makes no system call when
    /// none has arrived.
    std::vector<Ostra::KeyEvent> takeKeys();

    /// Adds an event as if it had just arrived.
    void addKey(const Ostra::KeyEvent& key);

    /// Returns the path of the file to write if somebody asked for a picture since the last call, see
    /// PictureRequest.h. Otherwise it takes no lock, makes no system call and allocates nothing. Does not
    /// open the socket.
    std::optional<std::string> takePicture();

    /// Where the figures of this process are handed over to the receiving thread, which answers those who ask
    /// for them. Null until somebody has asked. Takes no lock and makes no system call.
    FigureExchange* figures() { return mFigures.load(std::memory_order_acquire); }

    /// Calls `listener` on the receiving thread for every message that the application went to the
    /// background. Listeners are never removed; an empty one is ignored.
    void addListener(std::function<void()> listener);

    /// In a forked child: closes the parent's socket and lets go of its run.
    void onForked();

    /// Removes the socket file and calls no listener any more. Waits a moment for a listener that is running.
    void onExit();

private:
    void openLocked();
    std::string open();
    void receive();
    void receiveOne();
    void handle(const ProcessMessage& message);
    void callListeners();
    void answerFigures(std::uint32_t asker);
    void warnOnce(bool& isWarned, const char* text);

    /// Nothing has arrived and the socket does not have to be opened. Relaxed order: it only says whether to
    /// look; the mutex hands over the events themselves.
    std::atomic<bool> mIsIdle{false};

    /// Somebody asked for a picture. Relaxed order for the same reason.
    std::atomic<bool> mIsPictureWanted{false};

    /// Made by the receiving thread at the first question, and never destroyed. Acquire and release.
    std::atomic<FigureExchange*> mFigures{nullptr};

    std::mutex mMutex;            ///< guards the members below; never held while a listener runs
    bool mIsOpenSettled = false;  ///< the socket is open, or we gave up on it
    unsigned mFailures = 0;       ///< of opening the socket, so far
    std::chrono::steady_clock::time_point mNextAttempt;
    bool mIsClosing = false;
    bool mIsDropWarned = false;
    std::vector<Ostra::KeyEvent> mPending;
    std::vector<std::function<void()>> mListeners;
    std::thread::id mListeningThread;  ///< the thread that is running a listener, if any
    std::condition_variable mListenersDone;

    OwnSocket mSocket;  ///< only the receiving thread uses it, once it runs
    bool mIsGarbageWarned = false;
    bool mIsLossWarned = false;
    bool mIsListenerWarned = false;
};

}  // namespace platform
