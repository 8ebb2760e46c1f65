#pragma once

#include "opengl/shim/LayerCalls.h"

#include <atomic>
#include <cstddef>

namespace opengl {

/// Every function that the shim replaces, with the class that wraps it (`WrappedCalls.h`, `Wrappers.cpp`).
#define OPENGL_HOOKS(HOOK)                           \
    HOOK(eglSwapBuffers, EglSwap)                    \
    HOOK(eglSwapBuffersWithDamageKHR, EglDamageSwap) \
    HOOK(eglSwapBuffersWithDamageEXT, EglDamageSwap) \
    HOOK(glXSwapBuffers, GlxSwap)                    \
    HOOK(glXSwapBuffersMscOML, GlxMscSwap)           \
    HOOK(eglGetProcAddress, AnyLookUp)               \
    HOOK(glXGetProcAddress, AnyLookUp)               \
    HOOK(glXGetProcAddressARB, AnyLookUp)            \
    HOOK(eglDestroyContext, EglDestroy)              \
    HOOK(eglTerminate, EglTerminate)                 \
    HOOK(eglSurfaceAttrib, EglAttribute)             \
    HOOK(eglQuerySurface, EglQuery)                  \
    HOOK(eglSetDamageRegionKHR, EglDamageRegion)     \
    HOOK(glXQueryDrawable, GlxQuery)                 \
    HOOK(glXDestroyContext, GlxDestroy)              \
    HOOK(glXFreeContextEXT, GlxDestroy)              \
    HOOK(glBindFramebuffer, FramebufferBind)         \
    HOOK(glBindFramebufferEXT, FramebufferBind)      \
    HOOK(glBindFramebufferOES, FramebufferBind)

enum class Hook : unsigned char {
#define OPENGL_HOOK(name, Way) name,
    OPENGL_HOOKS(OPENGL_HOOK)
#undef OPENGL_HOOK
        COUNT
};

constexpr std::size_t HOOKS = static_cast<std::size_t>(Hook::COUNT);

/// Slot 0 is the exported function that programs are linked to. Each other slot stands for a real function
/// that somebody looked up; different libraries have different functions of the same name.
constexpr std::size_t SLOTS = 4;

/// A real function. Each member is written once, with release order.
struct Slot {
    std::atomic<void*> real{nullptr};
    std::atomic<LookUp> lookUp{nullptr};  ///< the function that returned it, if any
};

extern Slot gSlots[HOOKS][SLOTS];

/// The wrapper of each slot.
extern void* const WRAPPERS[HOOKS][SLOTS];

/// Returns Hook::COUNT when the name is not hooked.
Hook findHook(const char* name);

extern const char* const HOOK_NAMES[HOOKS];

inline void* exportedFunction(Hook hook) {
    return WRAPPERS[static_cast<std::size_t>(hook)][0];
}

}  // namespace opengl
