#pragma once

#include <array>
#include <cstddef>

#include "opengl/gl/Functions.h"
#include "opengl/gl/Obstacle.h"

namespace opengl {

/// The vertex attributes the overlay draws with, of a context without vertex arrays.
class SavedAttributes {
public:
    static constexpr std::size_t COUNT = 3;

    /// False when a buffer could not be bound again.
    bool read(const Functions& gl);

    /// The overlay's vertices advance with every vertex.
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

/// What is bound where the overlay binds something of its own: vertex array, array buffer, and the texture
/// and sampler of one unit.
class SavedBindings {
public:
    static constexpr GLuint UNIT = 0;  ///< the texture unit

    /// Makes UNIT active, for only the active one can be asked. When something could not be bound again, the
    /// application's unit is active.
    Obstacle read(const Functions& gl);

    /// Takes back what read() did.
    void cancel(const Functions& gl) const;

    /// Samples by the texture's own parameters.
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
