#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "opengl/entry/WindowLibrary.h"

namespace opengl {

/// What the surfaces are that one context draws on, their size above all. Asking for it may take a round trip
/// to the display server, so it is asked for when there is a reason: a surface is new, the program has
/// changed its viewport or an attribute of a surface, or 250 ms have passed.
class SurfaceSizeCache {
public:
    struct Answer {
        SurfaceSize size;
        bool isSrgb = false;          ///< only when asked for
        Obstacle obstacle = nullptr;  ///< why nothing can be drawn on it
    };

    /// When an answer has to be asked for anew.
    struct Signs {
        std::array<int, 4> viewport = {};  ///< the program's
        unsigned int attributeChanges = 0;

        bool operator==(const Signs& other) const {
            return viewport == other.viewport && attributeChanges == other.attributeChanges;
        }
    };

    /// What the surface of this swap is now. `isSrgbWanted` stays the same.
    const Answer& look(const WindowLibrary& library, const Swap& swap, const Signs& signs, bool isSrgbWanted);

private:
    /// Programs with more windows than that in one context ask more often.
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
