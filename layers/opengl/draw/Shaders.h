#pragma once

#include "opengl/gl/Functions.h"

namespace opengl {

/// The sources of a shader, to be compiled as one.
struct ShaderSource {
    static constexpr int COUNT = 4;
    const char* mTexts[COUNT];
};

/// The program for the context's version of the shading language. Attributes: `position` in pixels, `uv`,
/// `color`. Uniforms: `toClip`, factors and offsets from pixels to clip space; `source`, texels to texture
/// coordinates in x and y and, for the application's picture, the distance of the samples in texture
/// coordinates in z and w, which are 0 for glyphs.
ShaderSource vertexShader(const Functions& functions);

/// Linear colours are for a surface that stores sRGB on its own.
ShaderSource fragmentShader(const Functions& functions, bool isLinear);

}  // namespace opengl
