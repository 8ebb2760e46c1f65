#pragma once

#include "opengl/gl/Functions.h"

#include <array>
#include <cstddef>

namespace opengl {

/// The memory layout of pixels that go into a texture or come from a framebuffer. Read only in frames that
/// move pixels.
class SavedPixelStore {
public:
    enum class Direction { UNPACK, PACK };

    explicit SavedPixelStore(Direction direction) : mDirection(direction) {}

    /// Unbinds the buffer and sets rows without gaps. When the buffer cannot be bound again, returns false
    /// and changes nothing.
    bool set(const Functions& gl);

    void restore(const Functions& gl) const;

private:
    static constexpr std::size_t MOST = 5;

    Direction mDirection;
    GLuint mBuffer = 0;
    std::array<GLint, MOST> mValues = {};
};

/// The compatibility profile's arithmetic on pixels that are moved in either direction.
class SavedPixelTransfer {
public:
    /// Turns the arithmetic off.
    void set(const Functions& gl);

    void restore(const Functions& gl) const;

private:
    static constexpr std::size_t SWITCH_COUNT = 3;
    static constexpr std::size_t COUNT = 8;

    std::array<GLint, SWITCH_COUNT> mSwitches = {};
    std::array<GLfloat, COUNT> mValues = {};
};

/// The framebuffer and the buffer to read from.
class SavedSource {
public:
    /// Selects the default framebuffer's buffer that a swap shows. When the framebuffer cannot be bound
    /// again, returns false and changes nothing.
    bool set(const Functions& gl);

    void restore(const Functions& gl) const;

private:
    GLuint mFramebuffer = 0;
    GLenum mBuffer = 0;
    bool mChangesBuffer = false;
};

}  // namespace opengl
