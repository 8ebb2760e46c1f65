#pragma once

#include <array>
#include <cstddef>

#include "opengl/gl/Functions.h"

namespace opengl {

/// How pixels are laid out in memory on their way into a texture, or out of a framebuffer. Read only in
/// frames that move pixels.
class SavedPixelStore {
public:
    enum class Direction { UNPACK, PACK };

    explicit SavedPixelStore(Direction direction) : mDirection(direction) {}

    /// No buffer bound, rows one after the other without gaps. False, with nothing changed, when a buffer
    /// could not be bound again.
    bool set(const Functions& gl);

    void restore(const Functions& gl) const;

private:
    static constexpr std::size_t MOST = 5;

    Direction mDirection;
    GLuint mBuffer = 0;
    std::array<GLint, MOST> mValues = {};
};

/// Arithmetic of the compatibility profile on pixels that are moved in either direction.
class SavedPixelTransfer {
public:
    /// Pixels stay as they are.
    void set(const Functions& gl);

    void restore(const Functions& gl) const;

private:
    static constexpr std::size_t SWITCH_COUNT = 3;
    static constexpr std::size_t COUNT = 8;

    std::array<GLint, SWITCH_COUNT> mSwitches = {};
    std::array<GLfloat, COUNT> mValues = {};
};

/// What is read from.
class SavedSource {
public:
    /// The default framebuffer's buffer that a swap shows. False, with nothing changed, when the framebuffer
    /// could not be bound again.
    bool set(const Functions& gl);

    void restore(const Functions& gl) const;

private:
    GLuint mFramebuffer = 0;
    GLenum mBuffer = 0;
    bool mChangesBuffer = false;
};

}  // namespace opengl
