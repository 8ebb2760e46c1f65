#include "opengl/draw/Textures.h"

#include "opengl/gl/ObjectNames.h"

namespace opengl {

GLuint createTexture(const Functions& gl, GLint filter) {
    const GLuint texture = newTexture(gl);
    gl.bindTexture(GL_TEXTURE_2D, texture);
    gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    return texture;
}

}  // namespace opengl
