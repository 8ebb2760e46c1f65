#pragma once

#include <mutex>
#include <stdexcept>
#include <string>

#include "entry/OverlayRight.h"
#include "opengl/draw/OverlayDrawing.h"
#include "opengl/entry/LayerApi.h"
#include "opengl/entry/SurfaceSizeCache.h"
#include "opengl/gl/Functions.h"
#include "opengl/gl/SavedState.h"
#include "opengl/passes/GpuTimer.h"
#include "opengl/passes/PassTimer.h"
#include "scene/Overlay.h"

namespace opengl {

/// The overlay cannot be shown in a context, and not later either.
class Unusable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What the overlays of a process share. The library works for one context at a time.
struct Shared {
    std::mutex mutex;  ///< around the library's work and the right; no call to OpenGL is made under it
    entry::OverlayRight right{LAYER_API};
};

/// The overlay in one context of the program. Made and used on the thread that the context is current on.
/// Allocates nothing once warm.
class ContextOverlay {
public:
    /// For the current context. Throws Unusable.
    ContextOverlay(GetProcAddress lookUp, Shared& shared);

    /// Anywhere, under the mutex. Calls nothing of OpenGL: what it made in the context goes with that, unless
    /// release() took it out before.
    ~ContextOverlay() = default;
    ContextOverlay(const ContextOverlay&) = delete;
    ContextOverlay& operator=(const ContextOverlay&) = delete;

    /// Around the real swap of what the context draws on. Returns why the frame goes without the overlay;
    /// null when the picture has it. Throws when the overlay has failed in this context; the context's state
    /// is the program's all the same.
    Obstacle beforeSwap(const WindowLibrary& library, const Swap& swap, unsigned int attributeChanges);
    void afterSwap(bool isProgramMeasuring);

    /// The program has bound a framebuffer.
    void onFramebufferBound() { mPasses.onFramebufferBound(); }

    /// Takes everything out of the context, which is current. Only the destructor may follow.
    void release();

private:
    Obstacle drawOverlay(const WindowLibrary& library, const Swap& swap, unsigned int attributeChanges);
    Obstacle beginFrame(bool isLookedAt);
    void lookAtSurface(const WindowLibrary& library, const Swap& swap, unsigned int attributeChanges);
    bool isPictureWanted();
    Obstacle show();
    void takePicture();

    /// What load() has filled, or Unusable.
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
