#pragma once

#include <pthread.h>
#include <unistd.h>

#include <atomic>

namespace platform {

/// The one T of this process. Made on first use and never destroyed, so that threads and late callers may use
/// it until the process has ended. A forked child has none of the parent's threads and may find its locks
/// taken, so it does not touch the parent's object and makes one of its own on first use.
///
/// T has two functions. `onForked()` is called in a child for the parent's object, and may only close
/// descriptors. `onExit()` is called when the process exits normally, before the destructors of statics that
/// existed when the object was made; it is not called in a child that was made without fork handlers (vfork,
/// a bare system call) and so still has the parent's object.
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
    inline static std::atomic<pid_t> gProcess{0};  ///< the process that made the object
    inline static T* gInherited = nullptr;         ///< the parent's object, reachable for leak checkers
};

}  // namespace platform
