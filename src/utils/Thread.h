#pragma once

#include <pthread.h>
#include <signal.h>

#include <thread>
#include <utility>

namespace utils {

/// While it lives, no signal is delivered to this thread, and a thread that it starts never gets any. Signals
/// that the caller has blocked already stay blocked.
class SignalsBlocked {
public:
    // Giving back the mask as it was would unblock what sigset_t has no room for: on 32-bit Android that is
    // every signal from 33 on. So only what was blocked here is unblocked again.
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

/// Starts a thread under a name of at most 15 bytes, as debuggers and top show it. The process's signals are
/// not for it: it takes none. Throws what std::thread throws when there can be none.
template <typename Body>
std::thread startThread(const char* name, Body body) {
    const SignalsBlocked blocked;
    return std::thread([name, body = std::move(body)] {
        pthread_setname_np(pthread_self(), name);
        body();
    });
}

}  // namespace utils
