#pragma once

#include <array>
#include <cstddef>

#include "opengl/gl/Functions.h"
#include "opengl/gl/Obstacle.h"

namespace opengl {

/// Tells whether the application counts or records what is drawn, so that the overlay would be counted too.
class Recording {
public:
    explicit Recording(const Functions& gl);

    /// A query for samples, primitives or pipeline statistics is running, a display list is being compiled,
    /// or what is drawn goes to selection or feedback. Conditional rendering cannot be asked for and needs
    /// not be: at most the overlay is not drawn.
    Obstacle find(const Functions& gl) const;

private:
    std::array<GLenum, 10> mTargets = {};  ///< of queries that the overlay's drawing would count for
    std::size_t mTargetCount = 0;
};

}  // namespace opengl
