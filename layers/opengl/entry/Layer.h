#pragma once

#include "entry/StatusNote.h"
#include "opengl/entry/ContextOverlay.h"
#include "opengl/entry/LayerApi.h"
#include "opengl/entry/WindowLibrary.h"
#include "opengl/shim/LayerCalls.h"

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace opengl {

/// The layer in this process (see PerProcess.h): its contexts and their overlays. Any thread. Never throws. A
/// forked child starts without contexts and calls nothing for its parent's.
class Layer {
public:
    /// Call it before the first use in a process.
    static void setShim(const ShimCalls& shim);

    SwapResult beforeSwap(const Swap& swap);
    void afterSwap(void* frame);
    void forget(WindowSystem windowSystem, void* display, void* context);
    void onFramebufferBound();

    void onForked() const;
    void onExit();

private:
    struct Context {
        const WindowLibrary* library;
        void* display;
        void* context;
        std::unique_ptr<ContextOverlay> overlay;  ///< null: passed through, for the time being or for good
        bool isInUse = false;         ///< by the thread that it is current on, outside of the mutex
        bool isForgotten = false;     ///< goes with the end of that use
        Obstacle obstacle = nullptr;  ///< of the last swap
        int failures = 0;
        std::int64_t failedAt = 0;           ///< in milliseconds
        std::int64_t triedAt = 0;            ///< when its overlay is made anew
        std::array<char, 200> failure = {};  ///< of the last one, as an obstacle
    };

    const WindowLibrary& libraryOf(const Swap& swap);
    Context* use(const Swap& swap, Obstacle& obstacle);
    Obstacle draw(Context& context, const Swap& swap);
    void endUse(Context& context);
    void fail(Context& context, const char* reason, bool isFinal);
    void removeOverlay(Context& context);
    void report(Obstacle obstacle, std::int64_t own = -1);
    static void updateListener();

    Shared mShared;  ///< its mutex guards what follows as well
    entry::StatusNote mStatus{LAYER_API};
    std::vector<Obstacle> mLogged;  ///< of surfaces
    std::vector<std::unique_ptr<WindowLibrary>> mLibraries;
    std::vector<std::unique_ptr<Context>> mContexts;
};

}  // namespace opengl
