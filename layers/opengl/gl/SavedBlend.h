#pragma once

#include <array>

#include "opengl/gl/Functions.h"

namespace opengl {

/// Blending and colour mask; of draw buffer 0 alone where each draw buffer has its own.
class SavedBlend {
public:
    /// Colours go over what is there by their alpha, and what is there gets no more transparent. All colours
    /// are written.
    void set(const Functions& gl);

    void restore(const Functions& gl) const;

private:
    bool mChangesEnable = false;
    bool mChangesFunction = false;
    bool mChangesEquation = false;
    bool mChangesMask = false;
    std::array<GLenum, 4> mFunction = {};  ///< source and destination for the colour, the same for alpha
    std::array<GLenum, 2> mEquation = {};  ///< for the colour, for alpha
    std::array<GLint, 4> mMask = {};
};

}  // namespace opengl
