#pragma once

#include "opengl/gl/Functions.h"

namespace opengl {

/// Names for a texture, a buffer and a framebuffer of the layer, to be bound at once. Where programs may
/// choose the names of their objects themselves (everywhere but in the core profile), these are far from what
/// they choose, 1, 2, 3 …, and from what they get when they ask for names: so both are the same as without
/// the overlay.
GLuint newTexture(const Functions& gl);
GLuint newBuffer(const Functions& gl);
GLuint newFramebuffer(const Functions& gl);

}  // namespace opengl
