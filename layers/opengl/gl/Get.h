#pragma once

#include "opengl/gl/Functions.h"

namespace opengl {

inline GLint getInteger(const Functions& gl, GLenum name) {
    GLint value = 0;
    gl.getIntegerv(name, &value);
    return value;
}

inline GLuint getName(const Functions& gl, GLenum binding) {
    return static_cast<GLuint>(getInteger(gl, binding));
}

/// Whether the bound object can be bound again. An object that another context of the share group deleted
/// lives on while it is bound here, but binding its name would create a new object, or fail.
inline bool isBindableBuffer(const Functions& gl, GLuint buffer) {
    return buffer == 0 || gl.isBuffer(buffer);
}

inline bool isBindableFramebuffer(const Functions& gl, GLuint framebuffer) {
    return framebuffer == 0 || gl.isFramebuffer(framebuffer);
}

}  // namespace opengl
