#pragma once

#include "opengl/gl/Functions.h"
#include "opengl/gl/Obstacle.h"

#include <array>

namespace opengl {

/// What is drawn to: the framebuffer, the draw buffers of the default framebuffer, the viewport.
class SavedTarget {
public:
    /// Requires a framebuffer that can be bound again.
    Obstacle read(const Functions& gl);

    /// Selects the default framebuffer, only its back buffer (or the front buffer when there is no back
    /// buffer), and width × height pixels of it.
    void set(const Functions& gl, int width, int height);

    /// Between set() and restore(): selects a framebuffer of the overlay's own, or the default one for 0, and
    /// width × height pixels of it.
    static void move(const Functions& gl, GLuint framebuffer, int width, int height);

    /// After set(): the surface has no back buffer.
    bool isSingleBuffered() const { return mIsSingleBuffered; }

    void restore(const Functions& gl) const;

private:
    static constexpr std::size_t MAX_DRAW_BUFFERS = 16;

    void setDrawBuffer(const Functions& gl);
    void restoreDrawBuffer(const Functions& gl) const;
    void setViewport(const Functions& gl, int width, int height);
    void restoreViewport(const Functions& gl) const;

    GLuint mFramebuffer = 0;
    std::array<GLenum, MAX_DRAW_BUFFERS> mDrawBuffers = {};
    GLsizei mDrawBufferCount = 0;
    bool mChangesDrawBuffer = false;
    bool mIsSingleBuffered = false;
    std::array<GLint, 4> mViewport = {};
    std::array<GLfloat, 4> mIndexedViewport = {};
    bool mChangesViewport = false;
};

/// The buffer of the default framebuffer that a swap shows.
GLenum getShownBuffer(const Functions& gl);

}  // namespace opengl
