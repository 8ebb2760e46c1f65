#pragma once

#include <array>
#include <cstddef>

#include "opengl/gl/Functions.h"
#include "opengl/gl/Obstacle.h"

namespace opengl {

/// The current program, and transform feedback that hangs on it. A bound program pipeline is not touched: it
/// comes back into its rights when no program is current again.
class SavedProgram {
public:
    /// The program must be one that can be made current again: not if it was deleted, and lives only as long
    /// as it is current, nor if its last link failed, and the executable of the link before is in use.
    Obstacle read(const Functions& gl);

    /// Pauses transform feedback; then another program may be made current.
    void set(const Functions& gl) const;

    void restore(const Functions& gl) const;

private:
    static constexpr std::size_t STAGES = 5;
    static constexpr std::size_t MAX_SUBROUTINES = 64;  ///< of all stages together

    Obstacle readSubroutines(const Functions& gl);

    GLuint mProgram = 0;
    bool mPausesFeedback = false;
    /// Which subroutine each subroutine uniform stands for, stage after stage: forgotten by the context
    /// whenever a program is made current.
    std::array<GLuint, MAX_SUBROUTINES> mSubroutines = {};
    std::array<GLint, STAGES> mSubroutineCounts = {};
};

}  // namespace opengl
