#include "opengl/context/HeadlessContext.h"

#include <EGL/eglext.h>

#include <algorithm>

std::unique_ptr<HeadlessContext> HeadlessContext::create(const Options& options) {
    std::unique_ptr<HeadlessContext> context(new HeadlessContext(options));
    return context->open() ? std::move(context) : nullptr;
}

bool HeadlessContext::open() {
    mDisplay = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr);
    if (mDisplay == EGL_NO_DISPLAY || !eglInitialize(mDisplay, nullptr, nullptr) || !chooseConfig()) {
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

HeadlessContext::~HeadlessContext() {
    // The display is left open: other contexts of the process use the same one.
    if (eglGetCurrentContext() == mContext) {
        eglMakeCurrent(mDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
    if (mSurface != EGL_NO_SURFACE) {
        eglDestroySurface(mDisplay, mSurface);
    }
    if (mContext != EGL_NO_CONTEXT) {
        eglDestroyContext(mDisplay, mContext);
    }
}

void HeadlessContext::makeCurrent() const {
    eglBindAPI(mOptions.api == Api::ES ? EGL_OPENGL_ES_API : EGL_OPENGL_API);
    eglMakeCurrent(mDisplay, mSurface, mSurface, mContext);
}

void HeadlessContext::resize(int width, int height) {
    const EGLSurface old = mSurface;
    mOptions.width = width;
    mOptions.height = height;
    mSurface = createSurface();
    makeCurrent();
    eglDestroySurface(mDisplay, old);
}

/// Of those that EGL offers, the one with exactly the wanted sizes; it sorts deeper colours first.
bool HeadlessContext::chooseConfig() {
    const EGLint alpha = mOptions.alpha ? 8 : 0;
    const EGLint wanted[] = {EGL_SURFACE_TYPE,
                             EGL_PBUFFER_BIT,
                             EGL_RENDERABLE_TYPE,
                             mOptions.api == Api::ES ? EGL_OPENGL_ES2_BIT : EGL_OPENGL_BIT,
                             EGL_RED_SIZE,
                             8,
                             EGL_GREEN_SIZE,
                             8,
                             EGL_BLUE_SIZE,
                             8,
                             EGL_ALPHA_SIZE,
                             alpha,
                             EGL_DEPTH_SIZE,
                             mOptions.depthAndStencil ? 24 : 0,
                             EGL_STENCIL_SIZE,
                             mOptions.depthAndStencil ? 8 : 0,
                             EGL_SAMPLES,
                             mOptions.samples,
                             EGL_NONE};
    EGLConfig configs[256];
    EGLint count = 0;
    eglChooseConfig(mDisplay, wanted, configs, 256, &count);
    const auto isExact = [&](EGLConfig config) {
        const auto is = [&](EGLint attribute, EGLint value) {
            EGLint actual = -1;
            return eglGetConfigAttrib(mDisplay, config, attribute, &actual) && actual == value;
        };
        return is(EGL_RED_SIZE, 8) && is(EGL_ALPHA_SIZE, alpha) && is(EGL_SAMPLES, mOptions.samples);
    };
    EGLConfig* const end = configs + count;
    EGLConfig* const found = std::find_if(configs, end, isExact);
    mConfig = found != end ? *found : nullptr;
    return found != end;
}

EGLSurface HeadlessContext::createSurface() const {
    const EGLint attributes[] = {
        EGL_WIDTH,       mOptions.width,    EGL_HEIGHT,
        mOptions.height, EGL_GL_COLORSPACE, mOptions.srgb ? EGL_GL_COLORSPACE_SRGB : EGL_GL_COLORSPACE_LINEAR,
        EGL_NONE};
    return eglCreatePbufferSurface(mDisplay, mConfig, attributes);
}

std::vector<std::uint8_t> HeadlessContext::readPixels() const {
    const opengl::Functions& gl = mFunctions;
    if (gl.features.framebuffers) {
        gl.bindFramebuffer(gl.features.readFramebuffers ? GL_READ_FRAMEBUFFER : GL_FRAMEBUFFER, 0);
    }
    if (gl.features.pixelBuffers) {
        gl.bindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    }
    gl.pixelStorei(GL_PACK_ALIGNMENT, 4);
    if (gl.features.packRows) {
        gl.pixelStorei(GL_PACK_ROW_LENGTH, 0);
        gl.pixelStorei(GL_PACK_SKIP_ROWS, 0);
        gl.pixelStorei(GL_PACK_SKIP_PIXELS, 0);
    }
    const auto row = static_cast<std::size_t>(width()) * 4;
    std::vector<std::uint8_t> pixels(row * static_cast<std::size_t>(height()));
    gl.readPixels(0, 0, width(), height(), GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    for (std::size_t top = 0, bottom = pixels.size() - row; top < bottom; top += row, bottom -= row) {
        const auto at = [&pixels](std::size_t offset) {
            return pixels.begin() + static_cast<std::ptrdiff_t>(offset);
        };
        std::swap_ranges(at(top), at(top + row), at(bottom));
    }
    return pixels;
}
