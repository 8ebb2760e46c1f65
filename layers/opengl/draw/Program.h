#pragma once

#include "opengl/draw/Shaders.h"
#include "opengl/gl/Functions.h"

#include <glm/vec2.hpp>
#include <glm/vec4.hpp>
#include <string>

namespace opengl {

/// A program that draws vertices of a batch, and its uniforms. Every call needs the context to be current.
class Program {
public:
    /// The locations of the vertex attributes.
    static constexpr GLuint POSITION = 0;
    static constexpr GLuint UV = 1;
    static constexpr GLuint COLOR = 2;

    /// Builds the program, with linear colours for a surface that converts them to sRGB. Returns an empty
    /// text and leaves the program in use, or returns why it cannot.
    std::string create(const Functions& gl, Shading shading, bool isLinear);
    void destroy(const Functions& gl);

    /// Uses the program with these uniforms, as described at vertexShader().
    void use(const Functions& gl, const glm::vec4& toClip, const glm::vec4& toTexture);

    /// Only for a program of means, while it is in use.
    void setGap(const Functions& gl, const glm::vec2& gap) const;

    explicit operator bool() const { return mName != 0; }

private:
    GLuint mName = 0;
    GLint mToClipLocation = -1;
    GLint mToTextureLocation = -1;
    GLint mGapLocation = -1;
    glm::vec4 mToClip{0.0F};
    glm::vec4 mToTexture{0.0F};
};

}  // namespace opengl
