#pragma once

#include "opengl/gl/Functions.h"

namespace opengl {

/// Returns a name for a texture, a buffer or a framebuffer of the layer; bind it at once. Everywhere but in
/// the core profile programs may choose names themselves. So ours are far from what programs choose (1, 2, 3
/// …) and from what they get when they ask for names, and programs see the same names as without the overlay.
GLuint newTexture(const Functions& gl);
GLuint newBuffer(const Functions& gl);
GLuint newFramebuffer(const Functions& gl);

}  // namespace opengl
