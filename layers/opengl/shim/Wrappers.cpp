#include "opengl/shim/Hooks.h"
#include "opengl/shim/RealFunctions.h"
#include "opengl/shim/WrappedCalls.h"

#include <dlfcn.h>

// The window systems' own headers are not needed: handles are pointers, drawables unsigned long.

namespace opengl {

namespace {

template <Hook HOOK, std::size_t SLOT>
Real findReal(const void* caller) {
    const Slot& slot = gSlots[static_cast<std::size_t>(HOOK)][SLOT];
    void* function = slot.real.load(std::memory_order_acquire);
    if (SLOT == 0 && __builtin_expect(function == nullptr, 0)) {
        function = resolveExported(HOOK, caller);
    }
    return {function, slot.lookUp};
}

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

struct GlxQuery {
    using Type = void(void* display, unsigned long drawable, int attribute, unsigned int* value);
    static void run(Real real, void* display, unsigned long drawable, int attribute, unsigned int* value) {
        constexpr int BACK_BUFFER_AGE = 0x20F4;
        if (real.function == nullptr) {
            return;
        }
        reinterpret_cast<Type*>(real.function)(display, drawable, attribute, value);
        if (attribute == BACK_BUFFER_AGE && value != nullptr && gDepth == 0 &&
            isBufferOverlaid(drawable, static_cast<int>(*value))) {
            *value = 0;
        }
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

void* realQuerySurface(void* sibling) {
    return resolveExported(Hook::eglQuerySurface, sibling);
}

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

OPENGL_EXPORT unsigned int eglQuerySurface(void* display, void* surface, int attribute, int* value) {
    return OPENGL_RUN(eglQuerySurface, EglQuery, display, surface, attribute, value);
}

OPENGL_EXPORT unsigned int eglSetDamageRegionKHR(void* display, void* surface, int* rects, int count) {
    return OPENGL_RUN(eglSetDamageRegionKHR, EglDamageRegion, display, surface, rects, count);
}

OPENGL_EXPORT void glXQueryDrawable(void* display, unsigned long drawable, int attribute,
                                    unsigned int* value) {
    OPENGL_RUN(glXQueryDrawable, GlxQuery, display, drawable, attribute, value);
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
