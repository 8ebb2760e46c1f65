#include "opengl/context/HeadlessContext.h"

#include <EGL/eglext.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>

namespace {

Display* connectionOf(void* connection) {
    return static_cast<Display*>(connection);
}

}  // namespace

std::unique_ptr<HeadlessContext> HeadlessContext::create(const Options& options) {
    std::unique_ptr<HeadlessContext> context(new HeadlessContext(options));
    return context->open() ? std::move(context) : nullptr;
}

bool HeadlessContext::open() {
    if (!openDisplay() || !eglInitialize(mDisplay, nullptr, nullptr) || !chooseConfig()) {
        return false;
    }
    eglBindAPI(mOptions.api == Api::ES ? EGL_OPENGL_ES_API : EGL_OPENGL_API);
    std::vector<EGLint> attributes = {EGL_CONTEXT_MAJOR_VERSION, mOptions.major, EGL_CONTEXT_MINOR_VERSION,
                                      mOptions.minor};
    if (mOptions.api != Api::ES && 10 * mOptions.major + mOptions.minor >= 32) {
        const bool core = mOptions.api == Api::CORE;
        attributes.insert(attributes.end(), {EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                             core ? EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT
                                                  : EGL_CONTEXT_OPENGL_COMPATIBILITY_PROFILE_BIT});
    }
    if (mOptions.debug) {
        attributes.insert(attributes.end(), {EGL_CONTEXT_OPENGL_DEBUG, EGL_TRUE});
    }
    attributes.push_back(EGL_NONE);
    const EGLContext shared = mOptions.shareWith != nullptr ? mOptions.shareWith->mContext : EGL_NO_CONTEXT;
    mContext = eglCreateContext(mDisplay, mConfig, shared, attributes.data());
    mSurface = createSurface();
    return mContext != EGL_NO_CONTEXT && mSurface != EGL_NO_SURFACE &&
           eglMakeCurrent(mDisplay, mSurface, mSurface, mContext) && mFunctions.load(&getProcAddress);
}

/// Contexts that share objects share a display. All others on the X server have one each: Mesa corrupts
/// memory when contexts of one display are used on several threads.
bool HeadlessContext::openDisplay() {
    // Stays open, so that the driver stays loaded: a leak check knows the driver's leaks by its name.
    static const EGLDisplay memory = [] {
        const EGLDisplay display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr);
        eglInitialize(display, nullptr, nullptr);
        return display;
    }();
    if (mOptions.surface == Surface::PBUFFER) {
        mDisplay = memory;
    } else if (mOptions.shareWith != nullptr) {
        mConnection = mOptions.shareWith->mConnection;
        mDisplay = mOptions.shareWith->mDisplay;
    } else {
        mConnection = XOpenDisplay(nullptr);
        mDisplay = mConnection == nullptr ? EGL_NO_DISPLAY
                                          : eglGetPlatformDisplay(EGL_PLATFORM_X11_EXT, mConnection, nullptr);
    }
    return mDisplay != EGL_NO_DISPLAY;
}

HeadlessContext::~HeadlessContext() {
    if (eglGetCurrentContext() == mContext) {
        eglMakeCurrent(mDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
    destroySurface(mSurface, mDrawable);
    if (mContext != EGL_NO_CONTEXT) {
        eglDestroyContext(mDisplay, mContext);
    }
    // The display without a server is left open: other contexts of the process use the same one.
    if (mConnection != nullptr && mOptions.shareWith == nullptr) {
        eglTerminate(mDisplay);
        XCloseDisplay(connectionOf(mConnection));
    }
}

void HeadlessContext::makeCurrent() const {
    eglBindAPI(mOptions.api == Api::ES ? EGL_OPENGL_ES_API : EGL_OPENGL_API);
    eglMakeCurrent(mDisplay, mSurface, mSurface, mContext);
}

void HeadlessContext::resize(int width, int height) {
    const EGLSurface oldSurface = mSurface;
    const unsigned long oldDrawable = mDrawable;
    mOptions.width = width;
    mOptions.height = height;
    mSurface = createSurface();
    makeCurrent();
    destroySurface(oldSurface, oldDrawable);
}

void HeadlessContext::destroySurface(EGLSurface surface, unsigned long drawable) const {
    if (surface != EGL_NO_SURFACE) {
        eglDestroySurface(mDisplay, surface);
    }
    if (drawable != 0 && mOptions.surface == Surface::PIXMAP) {
        XFreePixmap(connectionOf(mConnection), drawable);
    } else if (drawable != 0) {
        XDestroyWindow(connectionOf(mConnection), drawable);
    }
}

/// Of those that EGL offers, the one with exactly the wanted sizes; it sorts deeper colours first.
bool HeadlessContext::chooseConfig() {
    const EGLint kind = mOptions.surface == Surface::PBUFFER  ? EGL_PBUFFER_BIT
                        : mOptions.surface == Surface::PIXMAP ? EGL_PIXMAP_BIT
                        : mOptions.surface == Surface::PRESERVED
                            ? EGL_WINDOW_BIT | EGL_SWAP_BEHAVIOR_PRESERVED_BIT
                            : EGL_WINDOW_BIT;
    const EGLint api = mOptions.api == Api::ES ? EGL_OPENGL_ES2_BIT : EGL_OPENGL_BIT;
    // clang-format off
    const EGLint wanted[] = {
        EGL_SURFACE_TYPE, kind, EGL_RENDERABLE_TYPE, api, EGL_RED_SIZE, 8, EGL_GREEN_SIZE, 8, EGL_BLUE_SIZE, 8,
        EGL_ALPHA_SIZE, 8, EGL_DEPTH_SIZE, mOptions.hasDepth ? 24 : 0, EGL_STENCIL_SIZE, mOptions.hasDepth ? 8 : 0, EGL_SAMPLES, mOptions.samples, EGL_NONE};
    // clang-format on
    EGLConfig configs[256];
    EGLint count = 0;
    eglChooseConfig(mDisplay, wanted, configs, 256, &count);
    const auto isExact = [&](EGLConfig config) {
        const auto is = [&](EGLint attribute, EGLint value) {
            EGLint actual = -1;
            return eglGetConfigAttrib(mDisplay, config, attribute, &actual) && actual == value;
        };
        return is(EGL_RED_SIZE, 8) && is(EGL_ALPHA_SIZE, 8) && is(EGL_SAMPLES, mOptions.samples) &&
               (mOptions.hasDepth || (is(EGL_DEPTH_SIZE, 0) && is(EGL_STENCIL_SIZE, 0)));
    };
    EGLConfig* const end = configs + count;
    EGLConfig* const found = std::find_if(configs, end, isExact);
    mConfig = found != end ? *found : nullptr;
    return found != end;
}

EGLSurface HeadlessContext::createSurface() {
    const EGLint space = mOptions.srgb ? EGL_GL_COLORSPACE_SRGB : EGL_GL_COLORSPACE_LINEAR;
    if (mOptions.surface == Surface::PBUFFER) {
        const EGLint attributes[] = {EGL_WIDTH,         mOptions.width, EGL_HEIGHT, mOptions.height,
                                     EGL_GL_COLORSPACE, space,          EGL_NONE};
        return eglCreatePbufferSurface(mDisplay, mConfig, attributes);
    }
    EGLint visual = 0;
    eglGetConfigAttrib(mDisplay, mConfig, EGL_NATIVE_VISUAL_ID, &visual);
    mDrawable = createDrawable(mConnection, visual, mOptions);
    if (mDrawable == 0 || mOptions.surface == Surface::PIXMAP) {
        return mDrawable == 0 ? EGL_NO_SURFACE
                              : eglCreatePixmapSurface(mDisplay, mConfig, mDrawable, nullptr);
    }
    const bool isSingle = mOptions.surface == Surface::SINGLE_BUFFERED;
    const EGLint attributes[] = {EGL_RENDER_BUFFER, isSingle ? EGL_SINGLE_BUFFER : EGL_BACK_BUFFER,
                                 EGL_GL_COLORSPACE, space, EGL_NONE};
    const EGLSurface surface = eglCreateWindowSurface(mDisplay, mConfig, mDrawable, attributes);
    if (mOptions.surface == Surface::PRESERVED) {
        eglSurfaceAttrib(mDisplay, surface, EGL_SWAP_BEHAVIOR, EGL_BUFFER_PRESERVED);
    }
    return surface;
}

unsigned long HeadlessContext::createDrawable(void* to, int visualId, const Options& options) {
    Display* const connection = connectionOf(to);
    XVisualInfo wanted = {};
    wanted.visualid = static_cast<VisualID>(visualId);
    int count = 0;
    XVisualInfo* const visual = XGetVisualInfo(connection, VisualIDMask, &wanted, &count);
    if (visual == nullptr) {
        return 0;
    }
    const auto width = static_cast<unsigned int>(options.width);
    const auto height = static_cast<unsigned int>(options.height);
    const Window root = DefaultRootWindow(connection);
    unsigned long drawable = 0;
    if (options.surface == Surface::PIXMAP) {
        drawable = XCreatePixmap(connection, root, width, height, static_cast<unsigned int>(visual->depth));
    } else {
        XSetWindowAttributes look = {};
        look.colormap = XCreateColormap(connection, root, visual->visual, AllocNone);
        drawable = XCreateWindow(connection, root, 0, 0, width, height, 0, visual->depth, InputOutput,
                                 visual->visual, CWColormap | CWBorderPixel, &look);
        XMapWindow(connection, drawable);
    }
    XFree(visual);
    XSync(connection, False);
    return drawable;
}

std::vector<std::uint8_t> HeadlessContext::readPixels() const {
    const auto row = static_cast<std::size_t>(width()) * 4;
    std::vector<std::uint8_t> pixels(row * static_cast<std::size_t>(height()));
    for (int y = 0; y < height(); ++y) {
        mFunctions.readPixels(0, height() - 1 - y, width(), 1, GL_RGBA, GL_UNSIGNED_BYTE,
                              pixels.data() + static_cast<std::size_t>(y) * row);
    }
    return pixels;
}
