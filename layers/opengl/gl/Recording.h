#pragma once

#include "opengl/gl/Functions.h"
#include "opengl/gl/Obstacle.h"

#include <array>
#include <cstddef>

namespace opengl {

/// Tells whether the application counts or records what is drawn, which would include the overlay.
class Recording {
public:
    explicit Recording(const Functions& gl);

    /// Reports a running query of samples, primitives or pipeline statistics, a display list that is being
    /// compiled, and selection or feedback mode. OpenGL does not tell about conditional rendering, and it
    /// does no harm: at most the overlay is not drawn.
    Obstacle find(const Functions& gl) const;

private:
    std::array<GLenum, 10> mTargets = {};  ///< queries that would count the overlay's drawing
    std::size_t mTargetCount = 0;
};

}  // namespace opengl
