#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "opengl/entry/WindowLibrary.h"

namespace opengl {

/// The size of the surfaces that one context draws on. Asking for it may take a round trip to the display
/// server, so it is asked for when there is a reason: a surface is new, the program has changed its viewport,
/// or 250 ms have passed.
class SurfaceWatch {
public:
    struct Answer {
        SurfaceSize size;
        bool isSrgb = false;  ///< only when asked for
    };

    /// What the surface of this swap is now. `viewport` is the program's; `isSrgbWanted` stays the same.
    const Answer& look(const WindowLibrary& library, const Swap& swap, const std::array<int, 4>& viewport,
                       bool isSrgbWanted);

private:
    /// Programs with more windows than that in one context ask more often.
    static constexpr std::size_t SURFACES = 4;

    struct Known {
        std::uintptr_t surface = 0;
        std::array<int, 4> viewport = {};
        std::int64_t time = 0;  ///< of the last question, in milliseconds
        Answer answer;
    };

    std::array<Known, SURFACES> mKnown;
    std::size_t mNext = 0;  ///< to be replaced
};

}  // namespace opengl
