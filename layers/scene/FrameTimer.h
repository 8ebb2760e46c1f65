#pragma once

#include <cstdint>

namespace scene {

/// Measures for how long the GPU works on each frame of the application: each API in its own way. Rendering
/// thread only. Nothing here waits, and no call is made to the API in it.
class FrameTimer {
public:
    /// From the moment at which the GPU began with the frame to the one at which it was done.
    struct Time {
        std::uint32_t frame = 0;
        std::uint64_t nanoseconds = 0;
    };

    virtual ~FrameTimer() = default;

    /// After each swap while the overlay is shown: what the frame that begins is called, and whether it is to
    /// be timed. A frame that cannot be timed is left out.
    virtual void beginFrame(std::uint32_t frame, bool isTimed) = 0;

    /// Takes the time of the first frame that has become known since. False when there is none.
    virtual bool take(Time& time) = 0;
};

}  // namespace scene
