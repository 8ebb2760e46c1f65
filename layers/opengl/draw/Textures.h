#pragma once

#include "opengl/gl/Functions.h"

namespace opengl {

/// Creates and binds a texture without mipmaps that clamps at its edges.
GLuint createTexture(const Functions& gl, GLint filter);

}  // namespace opengl
