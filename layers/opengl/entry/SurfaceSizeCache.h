#pragma once

#include "opengl/entry/WindowLibrary.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace opengl {

/// The size and kind of the surfaces of one context. Asking for them may take a round trip to the display
/// server. So it asks only if there is a reason: a surface is new, the program has changed its viewport or an
/// attribute of a surface, or 250 ms have passed.
class SurfaceSizeCache {
public:
    struct Answer {
        SurfaceSize size;
        bool isSrgb = false;          ///< only when asked for
        Obstacle obstacle = nullptr;  ///< why nothing can be drawn on it
    };

    /// A change of any of these makes it ask again.
    struct Signs {
        std::array<int, 4> viewport = {};  ///< the program's
        unsigned int attributeChanges = 0;

        bool operator==(const Signs& other) const {
            return viewport == other.viewport && attributeChanges == other.attributeChanges;
        }
    };

    /// Returns what the surface of this swap is now. `isSrgbWanted` must be the same in every call.
    const Answer& look(const WindowLibrary& library, const Swap& swap, const Signs& signs, bool isSrgbWanted);

private:
    /// With more windows than this in one context it asks more often.
    static constexpr std::size_t SURFACES = 4;

    struct Known {
        std::uintptr_t surface = 0;
        Signs signs;
        std::int64_t time = 0;  ///< of the last question, in milliseconds
        Answer answer;
    };

    std::array<Known, SURFACES> mKnown;
    std::size_t mNext = 0;  ///< to be replaced
};

}  // namespace opengl
