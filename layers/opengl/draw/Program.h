#pragma once

#include <glm/vec2.hpp>

#include <string>

#include "opengl/gl/Functions.h"

namespace opengl {

/// The program that draws a batch, and what its uniforms are set to. Every call needs the context to be
/// current.
class Program {
public:
    /// Places of the vertices' attributes.
    static constexpr GLuint POSITION = 0;
    static constexpr GLuint UV = 1;
    static constexpr GLuint COLOR = 2;

    /// With linear colours for a surface that stores sRGB on its own. An empty text, or why there is none.
    /// The program is in use then.
    std::string create(const Functions& gl, bool isLinear);
    void destroy(const Functions& gl);

    /// Puts it in use for a surface of this size in pixels, and for glyphs of a texture with this side.
    void use(const Functions& gl, const glm::uvec2& surface, int side);

    /// While in use: the next draw is of the application's picture, whose samples are so far from one another
    /// in texture coordinates.
    void beginPicture(const Functions& gl, const glm::vec2& step) const;

    /// The next draw is of glyphs again.
    void endPicture(const Functions& gl) const { setGlyphs(gl, mSide); }

    explicit operator bool() const { return mName != 0; }

private:
    void setGlyphs(const Functions& gl, int side) const;

    GLuint mName = 0;
    GLint mToClip = -1;
    GLint mSource = -1;
    glm::uvec2 mSurface{0, 0};
    int mSide = 0;
};

}  // namespace opengl
