#include <dlfcn.h>
#include <errno.h>
#include <string.h>

#include "opengl/shim/Hooks.h"
#include "opengl/shim/LayerLoader.h"
#include "opengl/shim/RealFunctions.h"

// The window systems' own headers are not needed: handles are pointers, drawables unsigned long.

namespace opengl {

namespace {

/// How many hooked functions this thread is in. Calls from inside one of them pass straight through.
[[gnu::tls_model("initial-exec")]] thread_local int gDepth = 0;

/// A real function and the one that returned it.
struct Real {
    void* function;  ///< null only for an exported function that the program does not have
    const Slot& slot;
};

template <Hook HOOK, std::size_t SLOT>
Real findReal(const void* caller) {
    const Slot& slot = gSlots[static_cast<std::size_t>(HOOK)][SLOT];
    void* function = slot.real.load(std::memory_order_acquire);
    if (SLOT == 0 && __builtin_expect(function == nullptr, 0)) {
        function = resolveExported(HOOK, caller);
    }
    return {function, slot};
}

/// A program that measures with OpenGL ES's timer queries looks these up; we must not clear its flag.
void noteTimerQueries(const char* name) {
    constexpr const char* NAMES[] = {"glQueryCounterEXT", "glBeginQueryEXT", "glGetQueryObjectui64vEXT",
                                     "glGetQueryObjecti64vEXT"};
    if (name == nullptr || strncmp(name, "gl", 2) != 0) {
        return;
    }
    for (const char* const each : NAMES) {
        if (strcmp(name, each) == 0) {
            gIsMeasuring.store(true, std::memory_order_relaxed);
        }
    }
}

/// Calls the layer around a swap; of nested swaps only around the outermost.
class Frame {
public:
    [[gnu::noinline]] Frame(Real real, WindowSystem windowSystem, void* display, std::uintptr_t surface) {
        if (gDepth++ == 0 && real.function != nullptr) {
            begin({windowSystem, display, surface, real.function,
                   real.slot.lookUp.load(std::memory_order_relaxed)});
        }
    }

    [[gnu::noinline]] ~Frame() {
        if (mResult.frame != nullptr) {
            end();
        }
        --gDepth;
    }

    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    bool hasDrawn() const { return mResult.hasDrawn; }

private:
    void begin(const Swap& swap) {
        const int callersErrno = errno;
        mLayer = loadLayer();
        if (mLayer != nullptr) {
            mResult = mLayer->beforeSwap(swap);
        }
        errno = callersErrno;
    }

    void end() {
        const int callsErrno = errno;
        mLayer->afterSwap(mResult.frame);
        errno = callsErrno;
    }

    const LayerCalls* mLayer = nullptr;
    SwapResult mResult;
};

struct EglSwap {
    using Type = unsigned int(void* display, void* surface);
    [[gnu::noinline]] static unsigned int run(Real real, void* display, void* surface) {
        const Frame frame(real, WindowSystem::EGL, display, reinterpret_cast<std::uintptr_t>(surface));
        return real.function == nullptr ? 0 : reinterpret_cast<Type*>(real.function)(display, surface);
    }
};

struct EglDamageSwap {
    using Type = unsigned int(void* display, void* surface, const int* rects, int count);
    [[gnu::noinline]] static unsigned int run(Real real, void* display, void* surface, const int* rects,
                                              int count) {
        const Frame frame(real, WindowSystem::EGL, display, reinterpret_cast<std::uintptr_t>(surface));
        if (real.function == nullptr) {
            return 0;
        }
        // The overlay may be outside the program's rectangles; none means the whole surface.
        const bool isWhole = frame.hasDrawn();
        return reinterpret_cast<Type*>(real.function)(display, surface, isWhole ? nullptr : rects,
                                                      isWhole ? 0 : count);
    }
};

struct GlxSwap {
    using Type = void(void* display, unsigned long drawable);
    [[gnu::noinline]] static void run(Real real, void* display, unsigned long drawable) {
        const Frame frame(real, WindowSystem::GLX, display, drawable);
        if (real.function != nullptr) {
            reinterpret_cast<Type*>(real.function)(display, drawable);
        }
    }
};

struct GlxMscSwap {
    using Type = std::int64_t(void* display, unsigned long drawable, std::int64_t target,
                              std::int64_t divisor, std::int64_t remainder);
    [[gnu::noinline]] static std::int64_t run(Real real, void* display, unsigned long drawable,
                                              std::int64_t target, std::int64_t divisor,
                                              std::int64_t remainder) {
        const Frame frame(real, WindowSystem::GLX, display, drawable);
        return real.function == nullptr
                   ? -1
                   : reinterpret_cast<Type*>(real.function)(display, drawable, target, divisor, remainder);
    }
};

struct AnyLookUp {
    using Type = void*(const char* name);
    [[gnu::noinline]] static void* run(Real real, const char* name) {
        if (real.function == nullptr) {
            return nullptr;
        }
        const auto lookUp = reinterpret_cast<LookUp>(real.function);
        noteTimerQueries(name);
        return wrapLookedUp(name, lookUp(name), lookUp);
    }
};

/// Tells the layer before the real call, so that a new context with the same handle finds nothing of the old
/// one, and again after it, in case another thread swapped in between. Without a context or a display the
/// call destroys nothing.
class Destruction {
public:
    [[gnu::noinline]] Destruction(WindowSystem windowSystem, void* display, void* context)
        : mWindowSystem(windowSystem), mDisplay(display), mContext(context) {
        tell();
    }
    ~Destruction() { tell(); }
    Destruction(const Destruction&) = delete;
    Destruction& operator=(const Destruction&) = delete;

private:
    void tell() const {
        const LayerCalls* const layer = mDisplay != nullptr ? loadedLayer() : nullptr;
        if (layer != nullptr) {
            const int callersErrno = errno;
            layer->contextDestroyed(mWindowSystem, mDisplay, mContext);
            errno = callersErrno;
        }
    }

    WindowSystem mWindowSystem;
    void* mDisplay;
    void* mContext;
};

struct EglDestroy {
    using Type = unsigned int(void* display, void* context);
    [[gnu::noinline]] static unsigned int run(Real real, void* display, void* context) {
        const Destruction destruction(WindowSystem::EGL, context != nullptr ? display : nullptr, context);
        return real.function == nullptr ? 0 : reinterpret_cast<Type*>(real.function)(display, context);
    }
};

struct EglTerminate {
    using Type = unsigned int(void* display);
    [[gnu::noinline]] static unsigned int run(Real real, void* display) {
        const Destruction destruction(WindowSystem::EGL, display, nullptr);
        return real.function == nullptr ? 0 : reinterpret_cast<Type*>(real.function)(display);
    }
};

struct EglAttribute {
    using Type = unsigned int(void* display, void* surface, int attribute, int value);
    [[gnu::noinline]] static unsigned int run(Real real, void* display, void* surface, int attribute,
                                              int value) {
        const unsigned int result = real.function == nullptr ? 0
                                                             : reinterpret_cast<Type*>(real.function)(
                                                                   display, surface, attribute, value);
        gSurfaceChanges.fetch_add(1, std::memory_order_relaxed);
        return result;
    }
};

struct GlxDestroy {
    using Type = void(void* display, void* context);
    [[gnu::noinline]] static void run(Real real, void* display, void* context) {
        const Destruction destruction(WindowSystem::GLX, context != nullptr ? display : nullptr, context);
        if (real.function != nullptr) {
            reinterpret_cast<Type*>(real.function)(display, context);
        }
    }
};

struct FramebufferBind {
    using Type = void(unsigned int target, unsigned int framebuffer);
    static void run(Real real, unsigned int target, unsigned int framebuffer) {
        if (real.function == nullptr) {
            return;
        }
        const FramebufferListener listener = gFramebufferListener.load(std::memory_order_relaxed);
        if (__builtin_expect(listener == nullptr, 1)) {
            return reinterpret_cast<Type*>(real.function)(target, framebuffer);
        }
        reinterpret_cast<Type*>(real.function)(target, framebuffer);
        if (gDepth == 0) {
            listener();
        }
    }
};

/// The wrapper function of one slot, with the signature of the real function.
template <Hook HOOK, typename Way, std::size_t SLOT, typename Type = typename Way::Type>
struct Wrapper;

template <Hook HOOK, typename Way, std::size_t SLOT, typename Result, typename... Arguments>
struct Wrapper<HOOK, Way, SLOT, Result(Arguments...)> {
    static Result call(Arguments... arguments) {
        return Way::run(findReal<HOOK, SLOT>(__builtin_return_address(0)), arguments...);
    }
};

}  // namespace

}  // namespace opengl

// The exported functions, with parameters in the form of the calling convention.
#define OPENGL_EXPORT extern "C" [[gnu::visibility("default")]]
#define OPENGL_RUN(name, Way, ...) \
    opengl::Way::run(opengl::findReal<opengl::Hook::name, 0>(__builtin_return_address(0)), __VA_ARGS__)

OPENGL_EXPORT unsigned int eglSwapBuffers(void* display, void* surface) {
    return OPENGL_RUN(eglSwapBuffers, EglSwap, display, surface);
}

OPENGL_EXPORT unsigned int eglSwapBuffersWithDamageKHR(void* display, void* surface, const int* rects,
                                                       int count) {
    return OPENGL_RUN(eglSwapBuffersWithDamageKHR, EglDamageSwap, display, surface, rects, count);
}

OPENGL_EXPORT unsigned int eglSwapBuffersWithDamageEXT(void* display, void* surface, const int* rects,
                                                       int count) {
    return OPENGL_RUN(eglSwapBuffersWithDamageEXT, EglDamageSwap, display, surface, rects, count);
}

OPENGL_EXPORT void glXSwapBuffers(void* display, unsigned long drawable) {
    OPENGL_RUN(glXSwapBuffers, GlxSwap, display, drawable);
}

OPENGL_EXPORT std::int64_t glXSwapBuffersMscOML(void* display, unsigned long drawable, std::int64_t target,
                                                std::int64_t divisor, std::int64_t remainder) {
    return OPENGL_RUN(glXSwapBuffersMscOML, GlxMscSwap, display, drawable, target, divisor, remainder);
}

OPENGL_EXPORT void* eglGetProcAddress(const char* name) {
    return OPENGL_RUN(eglGetProcAddress, AnyLookUp, name);
}

OPENGL_EXPORT void* glXGetProcAddress(const char* name) {
    return OPENGL_RUN(glXGetProcAddress, AnyLookUp, name);
}

OPENGL_EXPORT void* glXGetProcAddressARB(const char* name) {
    return OPENGL_RUN(glXGetProcAddressARB, AnyLookUp, name);
}

OPENGL_EXPORT unsigned int eglDestroyContext(void* display, void* context) {
    return OPENGL_RUN(eglDestroyContext, EglDestroy, display, context);
}

OPENGL_EXPORT unsigned int eglTerminate(void* display) {
    return OPENGL_RUN(eglTerminate, EglTerminate, display);
}

OPENGL_EXPORT unsigned int eglSurfaceAttrib(void* display, void* surface, int attribute, int value) {
    return OPENGL_RUN(eglSurfaceAttrib, EglAttribute, display, surface, attribute, value);
}

OPENGL_EXPORT void glXDestroyContext(void* display, void* context) {
    OPENGL_RUN(glXDestroyContext, GlxDestroy, display, context);
}

OPENGL_EXPORT void glXFreeContextEXT(void* display, void* context) {
    OPENGL_RUN(glXFreeContextEXT, GlxDestroy, display, context);
}

OPENGL_EXPORT void glBindFramebuffer(unsigned int target, unsigned int framebuffer) {
    OPENGL_RUN(glBindFramebuffer, FramebufferBind, target, framebuffer);
}

OPENGL_EXPORT void glBindFramebufferEXT(unsigned int target, unsigned int framebuffer) {
    OPENGL_RUN(glBindFramebufferEXT, FramebufferBind, target, framebuffer);
}

OPENGL_EXPORT void glBindFramebufferOES(unsigned int target, unsigned int framebuffer) {
    OPENGL_RUN(glBindFramebufferOES, FramebufferBind, target, framebuffer);
}

/// dlsym recognises callers by the return address. So we pass every other name on by a jump (the build sets
/// -foptimize-sibling-calls).
OPENGL_EXPORT void* dlsym(void* __restrict handle, const char* __restrict name) noexcept {
    opengl::noteTimerQueries(name);
    const opengl::Hook hook = opengl::findHook(name);
    if (hook != opengl::Hook::COUNT) {
        const void* const caller = __builtin_return_address(0);
        if (handle != RTLD_NEXT) {
            return opengl::findHooked(hook, handle, caller);
        }
        if (opengl::isMissingAfter(caller, hook)) {
            return nullptr;
        }
    }
    return opengl::realFindSymbol()(handle, name);
}

namespace opengl {

#define OPENGL_WRAPPERS(name, Way)                                                                  \
    {reinterpret_cast<void*>(&::name), reinterpret_cast<void*>(&Wrapper<Hook::name, Way, 1>::call), \
     reinterpret_cast<void*>(&Wrapper<Hook::name, Way, 2>::call),                                   \
     reinterpret_cast<void*>(&Wrapper<Hook::name, Way, 3>::call)},
void* const WRAPPERS[HOOKS][SLOTS] = {OPENGL_HOOKS(OPENGL_WRAPPERS)};
#undef OPENGL_WRAPPERS

}  // namespace opengl
