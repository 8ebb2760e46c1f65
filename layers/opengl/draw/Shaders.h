#pragma once

#include "opengl/gl/Functions.h"

namespace opengl {

/// What a program makes of the texture.
enum class Shading {
    COLOR,   ///< times that of the vertices
    GLYPHS,  ///< the same of a texture of glyphs, which has its two channels in red and green
    SOLID,   ///< nothing: the vertices' colour
    MEAN_4,  ///< the mean of two by two samples, covering everything
    MEAN_16  ///< the same of four by four
};

/// The sources of a shader, to be compiled as one.
struct ShaderSource {
    static constexpr int COUNT = 4;
    const char* texts[COUNT];
};

/// The shaders for the context's version of the shading language. Attributes: `position`, `uv` and `color` of
/// a drawlist::Vertex. Uniforms, of which x and y are factors and z and w are added: `toClip`, from positions
/// to clip space; `toTexture`, from uv to texture coordinates. For means also `gap`, between two
/// samples, in texture coordinates.
ShaderSource vertexShader(const Functions& functions, Shading shading, bool isLinear);

/// Writes colours that are multiplied by their alpha. Linear colours are for a surface that stores sRGB on
/// its own.
ShaderSource fragmentShader(const Functions& functions, Shading shading, bool isLinear);

}  // namespace opengl
