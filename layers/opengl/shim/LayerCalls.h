#pragma once

#include <atomic>
#include <cstdint>

/// What the preloaded shim and the layer that it loads tell each other. Both come from one build; the shim
/// asks the layer for the one function below and nothing else. No call throws.
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

/// What the layer makes of a swap.
struct SwapResult {
    void* frame = nullptr;  ///< for afterSwap(), which is not called when this is null
    bool hasDrawn = false;  ///< the picture differs from the program's
};

/// Told on the thread that bound a framebuffer, after it did.
using FramebufferListener = void (*)();

/// What the shim offers.
struct ShimCalls {
    void* (*findSymbol)(void* handle, const char* name);  ///< dlsym without the hooks
    /// Null, or who is told of every glBindFramebuffer of the program; for the layer to set. Relaxed order.
    std::atomic<FramebufferListener>* framebufferListener;
    /// Counts the program's calls of eglSurfaceAttrib. Relaxed order: a thread always sees its own.
    const std::atomic<unsigned int>* surfaceChanges;
    /// The program has looked up a function of OpenGL ES's timer queries. Relaxed order.
    const std::atomic<bool>* isMeasuring;
};

/// What the layer offers. Any thread.
struct LayerCalls {
    /// Right before the real swap, in the state the program left. Never a swap within a swap.
    SwapResult (*beforeSwap)(const Swap& swap);
    /// Right after it, on the same thread; the context may have been lost meanwhile.
    void (*afterSwap)(void* frame);
    /// Right before the real call. The context may be current on any thread, and then lives on until it is
    /// released there. A null context means all contexts of the display.
    void (*contextDestroyed)(WindowSystem windowSystem, void* display, void* context);
};

}  // namespace opengl

/// Called once, before everything else. The result stays valid.
extern "C" const opengl::LayerCalls* kordanixOpenGlLayer(const opengl::ShimCalls* shim);
