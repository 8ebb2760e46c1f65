#include "opengl/entry/WindowLibrary.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <dlfcn.h>

namespace opengl {

namespace {

// Of GLX's header, which brings all of X11's along.
constexpr int GLX_WIDTH_ATTRIBUTE = 0x801D;
constexpr int GLX_HEIGHT_ATTRIBUTE = 0x801E;

/// A handle on the library that a function lies in.
void* libraryOf(void* function) {
    Dl_info info;
    return dladdr(function, &info) != 0 ? dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD) : nullptr;
}

void* eglSurface(std::uintptr_t surface) {
    return reinterpret_cast<void*>(surface);  // NOLINT(performance-no-int-to-ptr): it was a pointer
}

template <typename Function>
void assign(Function& function, void* found) {
    function = reinterpret_cast<Function>(found);
}

}  // namespace

WindowLibrary::WindowLibrary(const Swap& swap, const ShimCalls& shim)
    : mWindowSystem(swap.windowSystem),
      mSwapFunction(swap.function),
      mFindSymbol(shim.findSymbol),
      mLibrary(libraryOf(swap.function)),
      mLookUp(swap.lookUp) {
    const bool isEgl = mWindowSystem == WindowSystem::EGL;
    const char* const lookUpName = isEgl ? "eglGetProcAddress" : "glXGetProcAddressARB";
    const auto findLookUp = [&] {
        if (mLookUp == nullptr && mLibrary != nullptr) {
            assign(mLookUp, mFindSymbol(mLibrary, lookUpName));
        }
        return mLookUp != nullptr;
    };
    // What others put in front of the library leads to it as a rule; failing that, the usual one is asked.
    if (!findLookUp()) {
        mLibrary = dlopen(isEgl ? "libEGL.so.1" : "libGLX.so.0", RTLD_LAZY | RTLD_NOLOAD);
        if (!findLookUp()) {
            return;
        }
    }
    if (isEgl) {
        assign(mGetCurrentContext, find("eglGetCurrentContext"));
        assign(mGetCurrentSurface, find("eglGetCurrentSurface"));
        assign(mQuerySurface, find("eglQuerySurface"));
        assign(mQueryContext, find("eglQueryContext"));
        mIsUsable = mGetCurrentContext != nullptr && mGetCurrentSurface != nullptr &&
                    mQuerySurface != nullptr && mQueryContext != nullptr;
    } else {
        assign(mGetCurrentContext, find("glXGetCurrentContext"));
        assign(mGetCurrentDisplay, find("glXGetCurrentDisplay"));
        assign(mGetCurrentDrawable, find("glXGetCurrentDrawable"));
        assign(mQueryDrawable, find("glXQueryDrawable"));
        assign(mGetContextId, find("glXGetContextIDEXT"));
        mIsUsable = mGetCurrentContext != nullptr && mGetCurrentDisplay != nullptr &&
                    mGetCurrentDrawable != nullptr && mQueryDrawable != nullptr;
    }
}

/// Old libraries do not look up what they export.
void* WindowLibrary::find(const char* name) const {
    void* const exported = mLibrary != nullptr ? mFindSymbol(mLibrary, name) : nullptr;
    return exported != nullptr ? exported : mLookUp(name);
}

bool WindowLibrary::isDrawnOn(const Swap& swap) const {
    if (mWindowSystem == WindowSystem::GLX) {
        return mGetCurrentDrawable() == swap.surface && mGetCurrentDisplay() == swap.display;
    }
    // No two displays have a surface in common, and each question costs a system call in libglvnd.
    return mGetCurrentSurface(EGL_DRAW) == eglSurface(swap.surface);
}

bool WindowLibrary::isAlive(void* display, void* context) const {
    if (mWindowSystem == WindowSystem::GLX) {
        return mGetContextId == nullptr || mGetContextId(context) != 0;
    }
    // Sets EGL's own error at most, which the swap to come sets anew.
    int value = 0;
    return mQueryContext(display, context, EGL_CONFIG_ID, &value) != EGL_FALSE;
}

SurfaceSize WindowLibrary::size(void* display, std::uintptr_t surface) const {
    if (mWindowSystem == WindowSystem::GLX) {
        unsigned int width = 0;
        unsigned int height = 0;
        mQueryDrawable(display, surface, GLX_WIDTH_ATTRIBUTE, &width);
        mQueryDrawable(display, surface, GLX_HEIGHT_ATTRIBUTE, &height);
        return {static_cast<int>(width), static_cast<int>(height)};
    }
    SurfaceSize size;
    void* const handle = eglSurface(surface);
    mQuerySurface(display, handle, EGL_WIDTH, &size.width);
    mQuerySurface(display, handle, EGL_HEIGHT, &size.height);
    return size;
}

bool WindowLibrary::isSrgb(void* display, std::uintptr_t surface) const {
    int value = 0;
    return mWindowSystem == WindowSystem::EGL &&
           mQuerySurface(display, eglSurface(surface), EGL_GL_COLORSPACE, &value) != EGL_FALSE &&
           value == EGL_GL_COLORSPACE_SRGB;
}

}  // namespace opengl
