#pragma once

#include <atomic>
#include <cstdint>

/// The interface between the preloaded shim and the layer that it loads; also that between Android's entry
/// points and the layer in the same library. Both come from the same build. The shim looks up only the
/// function below. No call throws.
namespace opengl {

enum class WindowSystem : std::uint8_t { EGL, GLX };

/// A function that looks functions up: eglGetProcAddress or glXGetProcAddressARB.
using LookUp = void* (*)(const char* name);

/// A swap that the program has called.
struct Swap {
    WindowSystem windowSystem;
    void* display;           ///< EGLDisplay or Display*
    std::uintptr_t surface;  ///< EGLSurface or GLXDrawable
    void* function;          ///< the real function
    LookUp lookUp;           ///< the real look-up function that returned it; null when none did
};

/// The layer's answer to a swap.
struct SwapResult {
    void* frame = nullptr;  ///< for afterSwap(); when null, do not call that
    bool hasDrawn = false;  ///< the picture is no longer only the program's
};

/// Called after a thread has bound a framebuffer, on that thread.
using FramebufferListener = void (*)();

/// What the shim, or whatever is in its place, provides.
struct ShimCalls {
    /// dlsym without the hooks; null where the look-up function of a swap finds everything.
    void* (*findSymbol)(void* handle, const char* name);
    /// The layer sets it to a function that wants to know every glBindFramebuffer of the program, or null.
    /// Relaxed order.
    std::atomic<FramebufferListener>* framebufferListener;
    /// Counts the program's calls of eglSurfaceAttrib. Relaxed order: a thread always sees its own.
    const std::atomic<unsigned int>* surfaceChanges;
    /// Whether the program has looked up a function of OpenGL ES's timer queries. Relaxed order.
    const std::atomic<bool>* isMeasuring;
};

/// What the layer provides. Any thread.
struct LayerCalls {
    /// Call it right before the real swap, in the program's state. Not for a swap within a swap.
    SwapResult (*beforeSwap)(const Swap& swap);
    /// Call it right after the real swap, on the same thread; the context may have been lost meanwhile.
    void (*afterSwap)(void* frame);
    /// Call it right before the real call. The context may be current on any thread, and then lives until
    /// that thread releases it. A null context means all contexts of the display.
    void (*contextDestroyed)(WindowSystem windowSystem, void* display, void* context);
};

}  // namespace opengl

/// The shim calls it once, before everything else. The result stays valid.
extern "C" const opengl::LayerCalls* kordanixOpenGlLayer(const opengl::ShimCalls* shim);
