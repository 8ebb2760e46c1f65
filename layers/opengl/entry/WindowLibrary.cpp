#include "opengl/entry/WindowLibrary.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <dlfcn.h>

#include <cstring>

namespace opengl {

namespace {

// From GLX's header, which would include all of X11's.
constexpr int GLX_WIDTH_ATTRIBUTE = 0x801D;
constexpr int GLX_HEIGHT_ATTRIBUTE = 0x801E;
constexpr int GLX_PRESERVED_CONTENTS_ATTRIBUTE = 0x801B;
constexpr int GLX_DRAWABLE_TYPE_ATTRIBUTE = 0x8010;
constexpr unsigned int GLX_PIXMAP_TYPE = 2;
constexpr unsigned int GLX_PBUFFER_TYPE = 4;
constexpr int GLX_EXTENSIONS_NAME = 3;

constexpr Obstacle PBUFFER = "it swaps a pbuffer, which no swap shows";
constexpr Obstacle PIXMAP = "it swaps a pixmap, which no swap shows";
constexpr Obstacle PRESERVED = "its surface keeps its picture from swap to swap (EGL_BUFFER_PRESERVED)";

/// Returns a handle of the library that contains a function.
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
      mLibrary(shim.findSymbol != nullptr ? libraryOf(swap.function) : nullptr),
      mLookUp(swap.lookUp) {
    const bool isEgl = mWindowSystem == WindowSystem::EGL;
    const char* const lookUpName = isEgl ? "eglGetProcAddress" : "glXGetProcAddressARB";
    const auto findLookUp = [&] {
        if (mLookUp == nullptr && mLibrary != nullptr) {
            assign(mLookUp, mFindSymbol(mLibrary, lookUpName));
        }
        return mLookUp != nullptr;
    };
    // If somebody has put another library in front of this one, its look-up usually leads here; otherwise try
    // the usual library.
    if (!findLookUp()) {
        if (mFindSymbol == nullptr) {
            return;
        }
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
        assign(mQueryServerString, find("glXQueryServerString"));
        assign(mGetContextId, find("glXGetContextIDEXT"));
        mIsUsable = mGetCurrentContext != nullptr && mGetCurrentDisplay != nullptr &&
                    mGetCurrentDrawable != nullptr && mQueryDrawable != nullptr &&
                    mQueryServerString != nullptr;
    }
}

/// Old libraries cannot look up the functions that they export.
void* WindowLibrary::find(const char* name) const {
    void* const exported = mLibrary != nullptr ? mFindSymbol(mLibrary, name) : nullptr;
    return exported != nullptr ? exported : mLookUp(name);
}

bool WindowLibrary::isDrawnOn(const Swap& swap) const {
    if (mWindowSystem == WindowSystem::GLX) {
        return mGetCurrentDrawable() == swap.surface && mGetCurrentDisplay() == swap.display;
    }
    // Displays share no surfaces, so the surface is enough; each call costs a system call in libglvnd.
    return mGetCurrentSurface(EGL_DRAW) == eglSurface(swap.surface);
}

bool WindowLibrary::isOpenGlEs1(void* display, void* context) const {
    int api = 0;
    int version = 0;
    return mWindowSystem == WindowSystem::EGL &&
           mQueryContext(display, context, EGL_CONTEXT_CLIENT_TYPE, &api) != EGL_FALSE &&
           api == EGL_OPENGL_ES_API &&
           mQueryContext(display, context, EGL_CONTEXT_CLIENT_VERSION, &version) != EGL_FALSE && version < 2;
}

bool WindowLibrary::isAlive(void* display, void* context) const {
    if (mWindowSystem == WindowSystem::GLX) {
        return mGetContextId == nullptr || mGetContextId(context) != 0;
    }
    // At most it sets EGL's error, which the following swap sets again.
    int value = 0;
    return mQueryContext(display, context, EGL_CONFIG_ID, &value) != EGL_FALSE;
}

Obstacle WindowLibrary::findObstacle(void* display, std::uintptr_t surface) const {
    return mWindowSystem == WindowSystem::EGL ? findEglObstacle(display, eglSurface(surface))
                                              : findGlxObstacle(display, surface);
}

bool WindowLibrary::isLeftAlone(Obstacle obstacle) {
    return obstacle == PBUFFER || obstacle == PIXMAP || obstacle == SINGLE_BUFFERED || obstacle == PRESERVED;
}

Obstacle WindowLibrary::findEglObstacle(void* display, void* surface) const {
    // Windows and pixmaps have no such attribute, and leave the value alone.
    constexpr int UNTOUCHED = -1;
    int largest = UNTOUCHED;
    if (mQuerySurface(display, surface, EGL_LARGEST_PBUFFER, &largest) != EGL_FALSE && largest != UNTOUCHED) {
        return PBUFFER;
    }
    // Look at the buffer that the program asked for as well as the one that the context draws on: the library
    // may give another one, and the program may still redraw only what has changed.
    int wanted = EGL_BACK_BUFFER;
    int given = EGL_BACK_BUFFER;
    mQuerySurface(display, surface, EGL_RENDER_BUFFER, &wanted);
    mQueryContext(display, currentContext(), EGL_RENDER_BUFFER, &given);
    if (wanted == EGL_SINGLE_BUFFER || given == EGL_SINGLE_BUFFER) {
        return SINGLE_BUFFERED;
    }
    int behavior = EGL_BUFFER_DESTROYED;
    mQuerySurface(display, surface, EGL_SWAP_BEHAVIOR, &behavior);
    return behavior == EGL_BUFFER_PRESERVED ? PRESERVED : nullptr;
}

/// Does not find single-buffered drawables; only OpenGL knows those (SavedState).
Obstacle WindowLibrary::findGlxObstacle(void* display, unsigned long drawable) const {
    const char* const extensions = mQueryServerString(display, 0, GLX_EXTENSIONS_NAME);
    unsigned int value = 0;
    if (extensions != nullptr && std::strstr(extensions, "GLX_EXT_get_drawable_type") != nullptr) {
        mQueryDrawable(display, drawable, GLX_DRAWABLE_TYPE_ATTRIBUTE, &value);
        if (value == GLX_PIXMAP_TYPE) {
            return PIXMAP;
        }
        return value == GLX_PBUFFER_TYPE ? PBUFFER : nullptr;
    }
    mQueryDrawable(display, drawable, GLX_PRESERVED_CONTENTS_ATTRIBUTE, &value);
    return value != 0 ? PBUFFER : nullptr;  // windows and pixmaps have no such attribute
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
