#include "ostra/HelperThread.h"

#include <pthread.h>
#include <signal.h>

#include <string>
#include <system_error>
#include <thread>
#include <utility>

namespace platform {

bool startHelperThread(const char* name, std::function<void()> body) {
    // A new thread inherits its creator's mask. With everything blocked, the application's signals keep going
    // to its own threads, and a write past a file size limit or into a broken pipe fails instead of killing.
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous);
    bool isStarted = true;
    try {
        std::thread thread(std::move(body));
        pthread_setname_np(thread.native_handle(), std::string(name).substr(0, 15).c_str());
        thread.detach();
    } catch (const std::system_error&) {
        isStarted = false;
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return isStarted;
}

}  // namespace platform
