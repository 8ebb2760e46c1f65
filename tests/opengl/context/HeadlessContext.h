#pragma once

#include "opengl/gl/Functions.h"

#include <EGL/egl.h>

#include <cstdint>
#include <memory>
#include <vector>

/// An OpenGL or OpenGL ES context on Mesa's software renderer (set LIBGL_ALWAYS_SOFTWARE=1), with a surface
/// in memory or on the X server that $DISPLAY names. Current on the thread that made it; destroyed with the
/// object.
class HeadlessContext {
public:
    enum class Api { ES, CORE, COMPATIBILITY };

    /// All but the first one need an X server.
    enum class Surface { PBUFFER, WINDOW, SINGLE_BUFFERED, PRESERVED, PIXMAP };

    struct Options {
        Api api = Api::ES;
        /// At least this version; Mesa gives the highest that is compatible with it. To get an old one
        /// itself, set MESA_GL_VERSION_OVERRIDE ("2.1", "3.2FC") or MESA_GLES_VERSION_OVERRIDE before the
        /// process starts.
        int major = 2;
        int minor = 0;
        int width = 64;
        int height = 64;
        bool srgb = false;
        int samples = 0;
        bool debug = false;
        bool hasDepth = true;  ///< and a stencil buffer
        const HeadlessContext* shareWith =
            nullptr;  ///< its textures, buffers, programs are this context's too
        Surface surface = Surface::PBUFFER;
    };

    /// Null when there is no such context here.
    static std::unique_ptr<HeadlessContext> create(const Options& options);

    /// Nothing is current on this thread afterwards when it was this one.
    ~HeadlessContext();
    HeadlessContext(const HeadlessContext&) = delete;
    HeadlessContext& operator=(const HeadlessContext&) = delete;

    void makeCurrent() const;
    /// A new surface of another size, current with the old context.
    void resize(int width, int height);
    bool swap() const { return eglSwapBuffers(mDisplay, mSurface) != EGL_FALSE; }

    const opengl::Functions& functions() const { return mFunctions; }
    EGLDisplay display() const { return mDisplay; }
    EGLSurface surface() const { return mSurface; }
    EGLContext context() const { return mContext; }
    int width() const { return mOptions.width; }
    int height() const { return mOptions.height; }

    /// The surface, framebuffer 0 being bound, as RGBA, 4 bytes a pixel, the top row first.
    std::vector<std::uint8_t> readPixels() const;

    /// A window or pixmap on the X server that `connection` leads to; 0 without this visual.
    static unsigned long createDrawable(void* connection, int visualId, const Options& options);

    static void* getProcAddress(const char* name) { return reinterpret_cast<void*>(eglGetProcAddress(name)); }

private:
    explicit HeadlessContext(const Options& options) : mOptions(options) {}
    bool open();
    bool openDisplay();
    bool chooseConfig();
    EGLSurface createSurface();
    void destroySurface(EGLSurface surface, unsigned long drawable) const;

    Options mOptions;
    void* mConnection = nullptr;  ///< to the X server; whoever shares objects shares it
    unsigned long mDrawable = 0;  ///< the X server's
    EGLDisplay mDisplay = EGL_NO_DISPLAY;
    EGLConfig mConfig = nullptr;
    EGLSurface mSurface = EGL_NO_SURFACE;
    EGLContext mContext = EGL_NO_CONTEXT;
    opengl::Functions mFunctions;
};
