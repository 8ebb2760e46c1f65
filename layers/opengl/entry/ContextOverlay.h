#pragma once

#include <mutex>
#include <stdexcept>
#include <string>

#include "opengl/draw/OverlayDrawing.h"
#include "opengl/entry/SurfaceWatch.h"
#include "opengl/gl/Functions.h"
#include "opengl/gl/SavedState.h"
#include "opengl/passes/PassTimer.h"
#include "scene/Overlay.h"

namespace opengl {

/// The overlay cannot be shown in a context, and not later either.
class Unusable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The overlay in one context of the program. Made and used on the thread that the context is current on;
/// destroyed anywhere, without a call to OpenGL, for what it made in the context goes with that. The library
/// does its work for one context at a time, so that is done under `libraryMutex`, which no call to OpenGL is.
/// Allocates nothing once warm.
class ContextOverlay {
public:
    /// For the current context. Throws Unusable.
    ContextOverlay(GetProcAddress lookUp, std::mutex& libraryMutex);

    /// Under the mutex, for the library's part goes as well.
    ~ContextOverlay() = default;
    ContextOverlay(const ContextOverlay&) = delete;
    ContextOverlay& operator=(const ContextOverlay&) = delete;

    /// Around the real swap of what the context draws on. True when the picture differs from the program's.
    /// Throws when the overlay has failed in this context; the context's state is the program's all the same.
    bool beforeSwap(const WindowLibrary& library, const Swap& swap);
    void afterSwap();

    /// The program has bound a framebuffer.
    void onFramebufferBound() { mPasses.onFramebufferBound(); }

private:
    void endPasses();
    void lookAtSurface(const WindowLibrary& library, const Swap& swap);
    bool isPictureWanted();
    bool show();
    void takePicture();

    /// What load() has filled, or Unusable.
    static Functions load(GetProcAddress lookUp);

    std::mutex& mLibraryMutex;
    Functions mFunctions;
    SavedState mState;
    OverlayDrawing mDrawing;
    PassTimer mPasses;
    scene::Overlay mOverlay;
    SurfaceWatch mSurfaces;
    SurfaceSize mSize;  ///< of the surface last looked at
    bool mIsCreated = false;
    std::string mPicture;  ///< file to write the next picture to; empty for none
};

}  // namespace opengl
