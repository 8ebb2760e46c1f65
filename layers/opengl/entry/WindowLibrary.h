#pragma once

#include "entry/SurfaceSize.h"
#include "opengl/gl/Functions.h"
#include "opengl/gl/Obstacle.h"
#include "opengl/shim/LayerCalls.h"

#include <cstdint>

namespace opengl {

using entry::SurfaceSize;

/// The EGL or GLX library that a real swap function belongs to; a process may have several. Constant after
/// construction, so any thread may use it; the answers are about the calling thread.
class WindowLibrary {
public:
    WindowLibrary(const Swap& swap, const ShimCalls& shim);

    /// Whether it has every function that the layer needs.
    bool isUsable() const { return mIsUsable; }

    /// Whether that swap belongs to this library.
    bool isOf(const Swap& swap) const { return swap.function == mSwapFunction; }

    WindowSystem windowSystem() const { return mWindowSystem; }

    /// The library's look-up of OpenGL functions.
    GetProcAddress lookUp() const { return mLookUp; }

    /// The context that is current, null for none.
    void* currentContext() const { return mGetCurrentContext(); }

    /// Whether the current context draws on the surface of this swap.
    bool isDrawnOn(const Swap& swap) const;

    /// Whether the context is of OpenGL ES 1, whose functions may be in another library than those that
    /// lookUp() returns.
    bool isOpenGlEs1(void* display, void* context) const;

    /// Whether the context, which is current, can be made current again. A destroyed context lives until it
    /// is released.
    bool isAlive(void* display, void* context) const;

    /// Returns why we must not draw on the surface of the current context: a swap does not show it, or it
    /// keeps its picture, and so the overlay. May wait for the server.
    Obstacle findObstacle(void* display, std::uintptr_t surface) const;

    /// Whether the obstacle is one of findObstacle()'s, or SavedState's for such a surface.
    static bool isLeftAlone(Obstacle obstacle);

    /// Returns the surface's size, 0 by 0 when it is not known. May wait for the server.
    SurfaceSize size(void* display, std::uintptr_t surface) const;

    /// Whether an EGL surface stores sRGB.
    bool isSrgb(void* display, std::uintptr_t surface) const;

private:
    void* find(const char* name) const;
    Obstacle findEglObstacle(void* display, void* surface) const;
    Obstacle findGlxObstacle(void* display, unsigned long drawable) const;

    WindowSystem mWindowSystem;
    void* mSwapFunction;
    void* (*mFindSymbol)(void* library, const char* name);
    void* mLibrary = nullptr;  ///< handle, never given back
    GetProcAddress mLookUp = nullptr;
    bool mIsUsable = false;

    // By their types in either window system, as far as the calling convention tells them apart.
    void* (*mGetCurrentContext)() = nullptr;
    void* (*mGetCurrentDisplay)() = nullptr;
    void* (*mGetCurrentSurface)(int which) = nullptr;
    std::uintptr_t (*mGetCurrentDrawable)() = nullptr;
    unsigned int (*mQuerySurface)(void* display, void* surface, int attribute, int* value) = nullptr;
    unsigned int (*mQueryContext)(void* display, void* context, int attribute, int* value) = nullptr;
    void (*mQueryDrawable)(void* display, unsigned long drawable, int attribute,
                           unsigned int* value) = nullptr;
    const char* (*mQueryServerString)(void* display, int screen, int name) = nullptr;
    unsigned long (*mGetContextId)(void* context) = nullptr;
};

}  // namespace opengl
