#pragma once

#include "opengl/gl/Functions.h"

#include <array>

namespace opengl {

/// Blending and colour mask; only of draw buffer 0 where each draw buffer has its own.
class SavedBlend {
public:
    /// Blends colours that are multiplied by their alpha over the surface, without making the surface more
    /// transparent. Enables all channels.
    void set(const Functions& gl);

    void restore(const Functions& gl) const;

private:
    bool mChangesEnable = false;
    bool mChangesFunction = false;
    bool mChangesEquation = false;
    bool mChangesMask = false;
    std::array<GLenum, 4> mFunction = {};  ///< source and destination for colour, then for alpha
    std::array<GLenum, 2> mEquation = {};  ///< for the colour, for alpha
    std::array<GLint, 4> mMask = {};
};

}  // namespace opengl
