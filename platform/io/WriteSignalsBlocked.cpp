#include "io/WriteSignalsBlocked.h"

#include <cerrno>
#include <ctime>

namespace platform {

namespace {

constexpr int SIGNALS[] = {SIGXFSZ, SIGPIPE};

}  // namespace

WriteSignalsBlocked::WriteSignalsBlocked() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : SIGNALS) {
        sigaddset(&signals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &signals, &mPrevious);
    sigpending(&mPending);
}

WriteSignalsBlocked::~WriteSignalsBlocked() {
    const int callersErrno = errno;
    sigset_t raised;
    sigemptyset(&raised);
    for (const int signal : SIGNALS) {
        if (sigismember(&mPending, signal) == 0) {
            sigaddset(&raised, signal);
        }
    }
    // The kernel sends both to the thread that writes, so a signal that was not pending before is ours.
    const timespec atOnce = {};
    while (sigtimedwait(&raised, nullptr, &atOnce) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &mPrevious, nullptr);
    errno = callersErrno;
}

}  // namespace platform
