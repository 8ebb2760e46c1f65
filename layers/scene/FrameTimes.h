#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace scene {

/// One frame: from the end of the swap before to the end of its own. Nanoseconds.
struct FrameTime {
    std::uint64_t total = 0;
    std::uint64_t swap = 0;    ///< in the application's real swap call
    std::int64_t overlay = 0;  ///< in the layer's hooks; NOT_MEASURED where the layer does not tell
    std::int64_t gpu = 0;      ///< NOT_MEASURED until it is known

    static constexpr std::int64_t NOT_MEASURED = -1;
};

/// How long the last frames took, from readings of a clock that nobody sets: two around each swap, and two
/// around what the layer does if it tells. One thread at a time; allocates nothing.
class FrameTimes {
public:
    static constexpr std::size_t HISTORY = 256;

    /// The moments of a frame, in this order. One that comes again takes the place of the last. The first and
    /// the last need not be told.
    void onHook();     ///< the layer has been called
    void onSwap();     ///< the real swap is about to be called
    void onSwapped();  ///< it has returned
    void onLeft();     ///< the layer returns to the application

    /// The frame whose swap has returned is over. Whether its length is known: there must have been one
    /// before it.
    bool finish();

    /// What the running frame is called.
    std::uint32_t name() const { return static_cast<std::uint32_t>(mCount); }

    /// The next frame has nothing to do with the last one.
    void restart() { mHasSwapped = false; }

    /// The GPU's part of a frame, which comes late. Null when the frame is not there, else the frame.
    const FrameTime* setGpu(std::uint32_t name, std::uint64_t nanoseconds);

    std::size_t size() const;

    /// 0 is the last frame; below size().
    const FrameTime& ago(std::size_t frames) const;

private:
    std::array<FrameTime, HISTORY> mFrames;
    std::uint64_t mCount = 0;  ///< frames so far

    bool mHasSwapped = false;  ///< once since the restart
    std::uint64_t mSwappedAt = 0;
    std::uint64_t mLastSwappedAt = 0;
    std::uint64_t mHookedAt = 0;  ///< 0: not told of
    std::uint64_t mSwapAt = 0;
    std::uint64_t mAfterSwap = 0;  ///< spent in the hook after the last swap
};

}  // namespace scene
