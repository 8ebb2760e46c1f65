#pragma once

#include <atomic>
#include <cstddef>

#include "opengl/shim/LayerCalls.h"

namespace opengl {

/// Every function that the shim takes the place of, with its way of doing so (`Wrappers.cpp`).
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

/// Slot 0 is the exported function, which programs are linked to. Each of the others stands for one real
/// function that was looked up; libraries have functions of the same name that are not the same.
constexpr std::size_t SLOTS = 4;

/// One of the real functions. Written once each, with release order.
struct Slot {
    std::atomic<void*> real{nullptr};
    std::atomic<LookUp> lookUp{nullptr};  ///< what returned it, if anything did
};

extern Slot gSlots[HOOKS][SLOTS];

/// The wrapper over each slot.
extern void* const WRAPPERS[HOOKS][SLOTS];

/// Hook::COUNT when there is none.
Hook findHook(const char* name);

extern const char* const HOOK_NAMES[HOOKS];

inline void* exportedFunction(Hook hook) {
    return WRAPPERS[static_cast<std::size_t>(hook)][0];
}

}  // namespace opengl
