#include "ostra/HelperThread.h"

#include <android/log.h>
#include <pthread.h>
#include <signal.h>

#include <array>
#include <cstring>
#include <exception>
#include <thread>
#include <utility>

namespace platform {

namespace {

/// A name, cut to the length that the kernel allows for a thread.
struct ThreadName {
    std::array<char, 16> text = {};
};

void run(const ThreadName& name, const std::function<void()>& body) {
    const auto complain = [&](const char* reason) {
        __android_log_print(ANDROID_LOG_ERROR, "Ostra", "The thread %s ends: %s", name.text.data(), reason);
    };
    try {
        body();
    } catch (const std::exception& error) {
        complain(error.what());
    } catch (...) {
        complain("unknown error");
    }
}

}  // namespace

bool startHelperThread(const char* name, std::function<void()> body) {
    // A new thread inherits its creator's signal mask. With every signal blocked, the application's signals
    // keep going to its own threads, and a write past the file-size limit or into a broken pipe fails instead
    // of killing.
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous);
    bool isStarted = true;
    try {
        ThreadName shortName;
        std::strncpy(shortName.text.data(), name, shortName.text.size() - 1);
        std::thread thread([shortName, body = std::move(body)] { run(shortName, body); });
        pthread_setname_np(thread.native_handle(), shortName.text.data());
        thread.detach();
    } catch (const std::exception&) {  // no thread, or no memory for one
        isStarted = false;
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return isStarted;
}

}  // namespace platform
