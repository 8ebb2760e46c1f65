#pragma once

#include <cstdint>

namespace scene {

/// Measures how long the GPU works on each frame of the application; each API has its own way. Rendering
/// thread only. No operation waits or calls the API.
class FrameTimer {
public:
    /// When the GPU began the frame, and when it finished it.
    struct Time {
        std::uint32_t frame = 0;
        std::uint64_t nanoseconds = 0;
    };

    virtual ~FrameTimer() = default;

    /// Called after each swap while the overlay is shown, with the new frame's name and whether to time it.
    /// Skips a frame that cannot be timed.
    virtual void beginFrame(std::uint32_t frame, bool isTimed) = 0;

    /// Takes the time of the oldest frame that has become known. False when there is none.
    virtual bool take(Time& time) = 0;
};

}  // namespace scene
