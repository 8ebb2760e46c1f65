#pragma once

#include "opengl/shim/LayerCalls.h"
#include "opengl/shim/LayerLoader.h"
#include "opengl/shim/OverlaidSurfaces.h"

#include <errno.h>
#include <string.h>

#include <atomic>
#include <cstdint>

/// What wrappers of EGL's functions, and of glBindFramebuffer, do around the real call, however they got into
/// its place: the preloaded shim's, and those of Android's layer. Each makes the real call once and returns
/// its result; `errno` is the real call's. The window system's own headers are not needed: handles are
/// pointers.
namespace opengl {

/// How many wrapped functions this thread is in. Calls from inside one of them pass straight through.
inline thread_local int gDepth = 0;

/// A real function, and the one that returned it, if any.
struct Real {
    void* function;  ///< null only for an exported function that the program does not have
    const std::atomic<LookUp>& lookUp;
};

/// Returns the real eglQuerySurface of the library that `sibling`, a function of EGL, is in; null when there
/// is none. Whoever has the wrappers provides it.
void* realQuerySurface(void* sibling);

/// A program that measures with OpenGL ES's timer queries looks these up; we must not clear its flag.
[[gnu::noinline]] inline void noteTimerQueries(const char* name) {
    static constexpr const char* NAMES[] = {"glQueryCounterEXT", "glBeginQueryEXT",
                                            "glGetQueryObjectui64vEXT", "glGetQueryObjecti64vEXT"};
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
    [[gnu::noinline]] Frame(Real real, WindowSystem windowSystem, void* display, std::uintptr_t surface)
        : mSurface(surface) {
        if (gDepth++ == 0 && real.function != nullptr) {
            begin(
                {windowSystem, display, surface, real.function, real.lookUp.load(std::memory_order_relaxed)});
        }
    }

    [[gnu::noinline]] ~Frame() {
        if (mResult.frame != nullptr) {
            end();
        }
        if (--gDepth == 0) {
            noteSwap(mSurface, mResult.hasDrawn);
        }
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

    std::uintptr_t mSurface;
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

/// A buffer with the overlay in it is as good as a new one, whose age is 0.
struct EglQuery {
    using Type = unsigned int(void* display, void* surface, int attribute, int* value);
    static unsigned int run(Real real, void* display, void* surface, int attribute, int* value) {
        constexpr int BUFFER_AGE = 0x313D;
        if (real.function == nullptr) {
            return 0;
        }
        const unsigned int result =
            reinterpret_cast<Type*>(real.function)(display, surface, attribute, value);
        if (attribute == BUFFER_AGE && result != 0 && value != nullptr && gDepth == 0 &&
            isBufferOverlaid(reinterpret_cast<std::uintptr_t>(surface), *value)) {
            *value = 0;
        }
        return result;
    }
};

/// What the program is going to redraw does not include the overlay.
struct EglDamageRegion {
    using Type = unsigned int(void* display, void* surface, int* rects, int count);
    [[gnu::noinline]] static unsigned int run(Real real, void* display, void* surface, int* rects,
                                              int count) {
        if (real.function == nullptr) {
            return 0;
        }
        int whole[4] = {};
        const bool isReplaced = gDepth == 0 && isOverlaid(reinterpret_cast<std::uintptr_t>(surface)) &&
                                findWhole(real, display, surface, whole);
        return reinterpret_cast<Type*>(real.function)(display, surface, isReplaced ? whole : rects,
                                                      isReplaced ? 1 : count);
    }

private:
    static bool findWhole(Real real, void* display, void* surface, int (&rect)[4]) {
        constexpr int HEIGHT = 0x3056;
        constexpr int WIDTH = 0x3057;
        const auto query = reinterpret_cast<EglQuery::Type*>(realQuerySurface(real.function));
        return query != nullptr && query(display, surface, WIDTH, &rect[2]) != 0 &&
               query(display, surface, HEIGHT, &rect[3]) != 0;
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

}  // namespace opengl
