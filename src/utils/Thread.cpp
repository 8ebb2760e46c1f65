#include "utils/Thread.h"

namespace utils {

// Giving back the mask as it was would unblock what sigset_t has no room for: on 32-bit Android that is every
// signal from 33 on. So only what was blocked here is unblocked again.
// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): sigfillset() does
SignalsBlocked::SignalsBlocked() {
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

SignalsBlocked::~SignalsBlocked() {
    pthread_sigmask(SIG_UNBLOCK, &mBlockedHere, nullptr);
}

}  // namespace utils
