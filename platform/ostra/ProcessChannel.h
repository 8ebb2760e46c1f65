#pragma once

#include "ostra/OwnSocket.h"

#include <ostra/Ostra.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace platform {

struct ProcessMessage;

/// Receives what is sent to this process (see ProcessSocket.h) on a thread of its own, which sleeps until
/// something arrives. The socket is opened by the first takeKeys() or addListener(). When that fails, an
/// error is logged once, and later calls try again, a few times and slower each time. Should the application
/// close the socket, it is opened anew (see OwnSocket.h). One per process, see PerProcess.h; any thread.
class ProcessChannel {
public:
    /// Key events that wait to be taken. When that many wait, later ones are dropped until somebody takes
    /// them, and one warning is logged.
    static constexpr std::size_t MAX_PENDING = 4096;

    /// The events since the last call, in arrival order. Takes no lock and makes no system call while nothing
    /// has arrived.
    std::vector<Ostra::KeyEvent> takeKeys();

    /// Adds an event as if it had arrived now.
    void addKey(const Ostra::KeyEvent& key);

    /// The file to write when a picture was asked for since the last call, see PictureRequest.h. Takes no
    /// lock, makes no system call and allocates nothing while none was; does not open the socket.
    std::optional<std::string> takePicture();

    /// Calls `listener` from the receiving thread for every notice that the application went to the
    /// background. Listeners are never removed; an empty one is ignored.
    void addListener(std::function<void()> listener);

    /// In a forked child: lets go of the parent's socket and of its hold on the run.
    void onForked();

    /// Removes the socket file. No listener is called any more afterwards; one that runs is waited for, but
    /// only for a moment.
    void onExit();

private:
    void openLocked();
    std::string open();
    void receive();
    void receiveOne();
    void handle(const ProcessMessage& message);
    void callListeners();
    void warnOnce(bool& isWarned, const char* text);

    /// Nothing has arrived and the socket needs no opening. Relaxed order: it only says whether to look, the
    /// events themselves are handed over under the mutex.
    std::atomic<bool> mIsIdle{false};

    /// A picture was asked for. Relaxed order for the same reason.
    std::atomic<bool> mIsPictureWanted{false};

    std::mutex mMutex;            ///< guards what follows; never held while a listener runs
    bool mIsOpenSettled = false;  ///< it is open, or given up
    unsigned mFailures = 0;       ///< to open it
    std::chrono::steady_clock::time_point mNextAttempt;
    bool mIsClosing = false;
    bool mIsDropWarned = false;
    std::vector<Ostra::KeyEvent> mPending;
    std::vector<std::function<void()>> mListeners;
    std::thread::id mListeningThread;  ///< of the thread that runs a listener at the moment, else none
    std::condition_variable mListenersDone;

    OwnSocket mSocket;  ///< receiving thread's, once that runs
    bool mIsGarbageWarned = false;
    bool mIsLossWarned = false;
    bool mIsListenerWarned = false;
};

}  // namespace platform
