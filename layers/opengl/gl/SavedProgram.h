#pragma once

#include "opengl/gl/Functions.h"
#include "opengl/gl/Obstacle.h"

#include <array>
#include <cstddef>

namespace opengl {

/// The current program and its transform feedback. Leaves a bound program pipeline alone: it takes effect
/// again when no program is current.
class SavedProgram {
public:
    /// Requires a program that can be made current again. That is not so if it was deleted and lives only
    /// while it is current, or if its last link failed and the executable of an earlier link is in use.
    Obstacle read(const Functions& gl);

    /// Pauses transform feedback, so that another program may be made current.
    void set(const Functions& gl) const;

    void restore(const Functions& gl) const;

private:
    static constexpr std::size_t STAGES = 5;
    static constexpr std::size_t MAX_SUBROUTINES = 64;  ///< of all stages together

    Obstacle readSubroutines(const Functions& gl);

    GLuint mProgram = 0;
    bool mPausesFeedback = false;
    /// The subroutine of each subroutine uniform, stage after stage. The context forgets them whenever a
    /// program is made current.
    std::array<GLuint, MAX_SUBROUTINES> mSubroutines = {};
    std::array<GLint, STAGES> mSubroutineCounts = {};
};

}  // namespace opengl
