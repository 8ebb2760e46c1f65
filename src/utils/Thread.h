#pragma once

#include <pthread.h>
#include <signal.h>

#include <thread>
#include <utility>

namespace utils {

/// While it lives, this thread takes no signals, and a thread that it starts never takes any. Signals that
/// the caller had already blocked stay blocked.
class SignalsBlocked {
public:
    // Unblocks only the signals that it has blocked itself. Restoring the old mask would also unblock every
    // signal that sigset_t has no room for: on 32-bit Android all from 33 on.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): sigfillset() does
    SignalsBlocked() {
        sigfillset(&mBlockedHere);
        sigset_t before;
        sigemptyset(&before);
        pthread_sigmask(SIG_BLOCK, &mBlockedHere, &before);
        for (int signal = 1; signal < NSIG; ++signal) {
            if (sigismember(&before, signal) == 1) {
                sigdelset(&mBlockedHere, signal);
            }
        }
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_UNBLOCK, &mBlockedHere, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t mBlockedHere;
};

/// Starts a thread with a name of at most 15 bytes, which debuggers and top show. The thread takes none of
/// the process's signals. Throws what std::thread throws when it cannot start one.
template <typename Body>
std::thread startThread(const char* name, Body body) {
    const SignalsBlocked blocked;
    return std::thread([name, body = std::move(body)] {
        pthread_setname_np(pthread_self(), name);
        body();
    });
}

}  // namespace utils
