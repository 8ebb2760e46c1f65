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
    SignalsBlocked();
    ~SignalsBlocked();
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
