#pragma once

#include "opengl/gl/Functions.h"
#include "opengl/gl/Obstacle.h"

#include <array>
#include <cstddef>

namespace opengl {

/// The vertex attributes that the overlay uses, in a context without vertex array objects.
class SavedAttributes {
public:
    static constexpr std::size_t COUNT = 3;

    /// False when a buffer cannot be bound again.
    bool read(const Functions& gl);

    /// Makes the attributes advance with every vertex.
    void set(const Functions& gl) const;

    void restore(const Functions& gl) const;

private:
    struct Attribute {
        GLint isEnabled;
        GLint size;
        GLint type;
        GLint isNormalized;
        GLint isInteger;
        GLint stride;
        GLint divisor;
        GLuint buffer;
        void* pointer;
        GLfloat current[4];
    };

    std::array<Attribute, COUNT> mAttributes = {};
    GLuint mElementBuffer = 0;
};

/// The bindings that the overlay replaces: vertex array, array buffer, and the texture and sampler of one
/// unit.
class SavedBindings {
public:
    static constexpr GLuint UNIT = 0;  ///< the texture unit

    /// Makes UNIT active, because OpenGL answers only for the active unit. When something cannot be bound
    /// again, it makes the application's unit active again.
    Obstacle read(const Functions& gl);

    /// Undoes read().
    void cancel(const Functions& gl) const;

    /// Unbinds the sampler, so that the texture's own parameters apply.
    void set(const Functions& gl) const;

    void restore(const Functions& gl) const;

private:
    SavedAttributes mAttributes;
    GLuint mVertexArray = 0;
    GLuint mArrayBuffer = 0;
    GLenum mActiveUnit = 0;
    GLuint mTexture = 0;
    GLuint mSampler = 0;
};

}  // namespace opengl
