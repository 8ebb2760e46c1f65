#include "opengl/gl/SavedTarget.h"

#include "opengl/gl/Get.h"

#include <algorithm>

namespace opengl {
namespace {

GLenum getDrawTarget(const Functions& gl) {
    return gl.features.readFramebuffers ? GL_DRAW_FRAMEBUFFER : GL_FRAMEBUFFER;
}

}  // namespace

GLenum getShownBuffer(const Functions& gl) {
    return gl.version.isEs || getInteger(gl, GL_DOUBLEBUFFER) != 0 ? GL_BACK : GL_FRONT;
}

Obstacle SavedTarget::read(const Functions& gl) {
    if (!gl.features.framebuffers) {
        return nullptr;
    }
    mFramebuffer = getName(gl, GL_DRAW_FRAMEBUFFER_BINDING);
    return isBindableFramebuffer(gl, mFramebuffer) ? nullptr
                                                   : "the framebuffer that it has bound was deleted";
}

void SavedTarget::set(const Functions& gl, int width, int height) {
    if (mFramebuffer != 0) {
        gl.bindFramebuffer(getDrawTarget(gl), 0);
    }
    mChangesDrawBuffer = false;
    mIsSingleBuffered = false;
    if (gl.features.drawBuffers) {
        setDrawBuffer(gl);
    }
    setViewport(gl, width, height);
}

void SavedTarget::setDrawBuffer(const Functions& gl) {
    // GL_BACK stands for both back buffers, and a list of several buffers takes only single ones. So GL_BACK
    // comes alone.
    mDrawBuffers[0] = getName(gl, GL_DRAW_BUFFER0);
    if (mDrawBuffers[0] == GL_BACK) {
        return;
    }
    mDrawBufferCount = 1;
    const GLsizei most = std::min<GLsizei>(gl.maxDrawBuffers, MAX_DRAW_BUFFERS);
    // In OpenGL ES the default framebuffer has one draw buffer.
    for (GLsizei i = 1; i < most && gl.features.desktop; ++i) {
        const GLenum buffer = getName(gl, GL_DRAW_BUFFER0 + static_cast<GLenum>(i));
        mDrawBuffers[static_cast<std::size_t>(i)] = buffer;
        mDrawBufferCount = buffer != GL_NONE ? i + 1 : mDrawBufferCount;
    }
    const GLenum shown = getShownBuffer(gl);
    mIsSingleBuffered = shown == GL_FRONT;
    if (mDrawBufferCount == 1 && mDrawBuffers[0] == shown) {
        return;
    }
    mChangesDrawBuffer = true;
    if (gl.features.desktop) {
        gl.drawBuffer(shown);
    } else {
        gl.drawBuffers(1, &shown);
    }
}

void SavedTarget::restoreDrawBuffer(const Functions& gl) const {
    // Only glDrawBuffer takes names that stand for several buffers, such as GL_FRONT_AND_BACK.
    if (gl.features.desktop && mDrawBufferCount == 1) {
        gl.drawBuffer(mDrawBuffers[0]);
    } else {
        gl.drawBuffers(mDrawBufferCount, mDrawBuffers.data());
    }
}

void SavedTarget::setViewport(const Functions& gl, int width, int height) {
    if (gl.features.viewportArrays) {
        const std::array<GLfloat, 4> wanted = {0, 0, static_cast<GLfloat>(width),
                                               static_cast<GLfloat>(height)};
        gl.getFloati_v(GL_VIEWPORT, 0, mIndexedViewport.data());
        mChangesViewport = mIndexedViewport != wanted;
        if (mChangesViewport) {
            gl.viewportIndexedf(0, wanted[0], wanted[1], wanted[2], wanted[3]);
        }
        return;
    }
    const std::array<GLint, 4> wanted = {0, 0, width, height};
    gl.getIntegerv(GL_VIEWPORT, mViewport.data());
    mChangesViewport = mViewport != wanted;
    if (mChangesViewport) {
        gl.viewport(0, 0, width, height);
    }
}

void SavedTarget::restoreViewport(const Functions& gl) const {
    if (gl.features.viewportArrays) {
        gl.viewportIndexedfv(0, mIndexedViewport.data());
    } else {
        gl.viewport(mViewport[0], mViewport[1], mViewport[2], mViewport[3]);
    }
}

void SavedTarget::move(const Functions& gl, GLuint framebuffer, int width, int height) {
    gl.bindFramebuffer(getDrawTarget(gl), framebuffer);
    if (gl.features.viewportArrays) {
        gl.viewportIndexedf(0, 0, 0, static_cast<GLfloat>(width), static_cast<GLfloat>(height));
    } else {
        gl.viewport(0, 0, width, height);
    }
}

void SavedTarget::restore(const Functions& gl) const {
    if (mChangesViewport) {
        restoreViewport(gl);
    }
    if (mChangesDrawBuffer) {
        restoreDrawBuffer(gl);
    }
    if (mFramebuffer != 0) {
        gl.bindFramebuffer(getDrawTarget(gl), mFramebuffer);
    }
}

}  // namespace opengl
