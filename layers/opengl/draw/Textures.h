#pragma once

#include "opengl/gl/Functions.h"

namespace opengl {

/// A texture without mipmaps, bound, that ends at its edges.
GLuint createTexture(const Functions& gl, GLint filter);

}  // namespace opengl
