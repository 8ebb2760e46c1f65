#include "processes/EndSignals.h"

#include <unistd.h>

#include <ctime>
#include <initializer_list>

namespace control {

EndSignals::EndSignals() {
    sigemptyset(&mSignals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&mSignals, signal);
    }
    pthread_sigmask(SIG_BLOCK, &mSignals, &mPrevious);
}

EndSignals::~EndSignals() {
    pthread_sigmask(SIG_SETMASK, &mPrevious, nullptr);
}

bool EndSignals::wait(std::chrono::nanoseconds time) const {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    timespec moment = {};
    moment.tv_sec = static_cast<time_t>(seconds.count());
    moment.tv_nsec = static_cast<long>((time - seconds).count());
    const int signal = sigtimedwait(&mSignals, nullptr, &moment);
    if (signal > 0) {
        kill(getpid(), signal);  // for whoever waits next, in any thread; it takes effect once unblocked
    }
    return signal <= 0;
}

}  // namespace control
