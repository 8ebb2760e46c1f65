#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "opengl/entry/ContextOverlay.h"
#include "opengl/entry/WindowLibrary.h"
#include "opengl/shim/LayerCalls.h"

namespace opengl {

/// The layer in this process (see PerProcess.h): which contexts there are, and the overlay of each. Any
/// thread. Nothing is thrown. A forked child begins with no contexts and calls nothing for those it left.
class Layer {
public:
    /// Before the first use in a process.
    static void setShim(const ShimCalls& shim);

    SwapResult beforeSwap(const Swap& swap);
    void afterSwap(void* frame);
    void forget(WindowSystem windowSystem, void* display, void* context);
    void onFramebufferBound();

    void onForked() const;
    void onExit() const {}

private:
    struct Context {
        const WindowLibrary* library;
        void* display;
        void* context;
        std::unique_ptr<ContextOverlay> overlay;  ///< null: passed through for good
        bool isInUse = false;      ///< by the thread that it is current on, outside of the mutex
        bool isForgotten = false;  ///< goes with the end of that use
    };

    const WindowLibrary& libraryOf(const Swap& swap);
    Context* use(const WindowLibrary& library, const Swap& swap);
    Context* add(const WindowLibrary& library, void* display, void* context);
    void endUse(Context& context);
    void fail(Context& context, const char* reason);
    static void updateListener();

    std::mutex mMutex;  ///< guards what follows, and the library's work
    std::vector<std::unique_ptr<WindowLibrary>> mLibraries;
    std::vector<std::unique_ptr<Context>> mContexts;
};

}  // namespace opengl
