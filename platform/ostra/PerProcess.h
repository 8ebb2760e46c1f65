#pragma once

#include <pthread.h>
#include <unistd.h>

#include <atomic>

namespace platform {

/// The one T of this process, made on first use and never destroyed, so that threads and late callers may use
/// it until the process has ended. A forked child has none of the parent's threads and may find its locks
/// taken: it leaves the parent's object alone and gets one of its own on first use.
///
/// T has `onForked()`, called in a child for the parent's object, which may only close descriptors, and
/// `onExit()`, called when the process exits in an orderly way, before the statics that existed when the
/// object was made are destroyed; not in a child that was made without fork handlers (vfork, a bare system
/// call) and still has the parent's object.
template <typename T>
class PerProcess {
public:
    static T& get() {
        T* const object = find();
        return object != nullptr ? *object : create();
    }

    /// Null before the first use.
    static T* find() { return gObject.load(std::memory_order_acquire); }

private:
    struct AtExit {
        ~AtExit() {
            T* const object = find();
            if (object != nullptr && getpid() == gProcess) {
                object->onExit();
            }
        }
    };

    static T& create() {
        static const int isRegistered = pthread_atfork(nullptr, nullptr, forget);
        static_cast<void>(isRegistered);
        static const AtExit atExit;
        T* const fresh = new T;
        gProcess = getpid();
        T* existing = nullptr;
        if (gObject.compare_exchange_strong(existing, fresh, std::memory_order_acq_rel)) {
            return *fresh;
        }
        delete fresh;
        return *existing;
    }

    static void forget() {
        if (T* const inherited = gObject.exchange(nullptr)) {
            inherited->onForked();
            gInherited = inherited;
        }
    }

    inline static std::atomic<T*> gObject{nullptr};
    inline static std::atomic<pid_t> gProcess{0};  ///< whose object it is
    inline static T* gInherited = nullptr;         ///< keeps it reachable for leak checkers
};

}  // namespace platform
