#pragma once

#include "entry/OverlayRight.h"
#include "opengl/draw/OverlayDrawing.h"
#include "opengl/entry/LayerApi.h"
#include "opengl/entry/SurfaceSizeCache.h"
#include "opengl/gl/Functions.h"
#include "opengl/gl/SavedState.h"
#include "opengl/passes/GpuTimer.h"
#include "opengl/passes/PassTimer.h"
#include "scene/Overlay.h"

#include <mutex>
#include <stdexcept>
#include <string>

namespace opengl {

/// Thrown when the overlay can never be shown in a context.
class Unusable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the overlays of a process share. The library works for only one context at a time.
struct Shared {
    std::mutex mutex;  ///< around the library's work and the right; no call to OpenGL is made under it
    entry::OverlayRight right{LAYER_API};
};

/// The overlay in one context of the program. Create and use it on the thread where the context is current.
/// Allocates nothing once warm.
class ContextOverlay {
public:
    /// Makes an overlay for the current context. Throws Unusable.
    ContextOverlay(GetProcAddress lookUp, Shared& shared);

    /// On any thread, under the mutex. Does not call OpenGL: unless release() has removed them, the overlay's
    /// objects are freed with the context.
    ~ContextOverlay() = default;
    ContextOverlay(const ContextOverlay&) = delete;
    ContextOverlay& operator=(const ContextOverlay&) = delete;

    /// Call these around the real swap of the context's surface. Returns why the frame has no overlay, or
    /// null when it has. Throws when the overlay has failed in this context; even then the context has the
    /// program's state.
    Obstacle beforeSwap(const WindowLibrary& library, const Swap& swap, unsigned int attributeChanges);
    void afterSwap(bool isProgramMeasuring);

    /// What the layer took of the last frame, in nanoseconds; negative when that is not known.
    std::int64_t ownTime() const { return mOverlay.mScene.mFrameTimes.lastOverlay(); }

    /// The program has bound a framebuffer.
    void onFramebufferBound() { mPasses.onFramebufferBound(); }

    /// Removes everything from the context, which must be current. Only the destructor may follow.
    void release();

private:
    Obstacle drawOverlay(const WindowLibrary& library, const Swap& swap, unsigned int attributeChanges);
    Obstacle beginFrame(bool isLookedAt);
    void lookAtSurface(const WindowLibrary& library, const Swap& swap, unsigned int attributeChanges);
    bool isPictureWanted();
    Obstacle show();
    void takePicture();

    /// Returns the context's functions, or throws Unusable.
    static Functions load(GetProcAddress lookUp);

    Shared& mShared;
    Functions mFunctions;
    SavedState mState;
    OverlayDrawing mDrawing;
    PassTimer mPasses;
    GpuTimer mTimer;
    scene::Overlay mOverlay;
    SurfaceSizeCache mSurfaces;
    SurfaceSizeCache::Answer mSurface;  ///< the one last looked at
    bool mIsInFrame = false;            ///< the library's frame has begun
    bool mIsCreated = false;
    std::string mPicture;  ///< file to write the next picture to; empty for none
};

}  // namespace opengl
