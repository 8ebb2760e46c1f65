#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace scene {

/// One frame, from the end of the previous swap to the end of its own. Nanoseconds.
struct FrameTime {
    std::uint64_t total = 0;
    std::uint64_t swap = 0;    ///< in the application's real swap call
    std::int64_t overlay = 0;  ///< in the layer's hooks; NOT_MEASURED where the layer does not tell
    std::int64_t gpu = 0;      ///< NOT_MEASURED until it is known
    std::uint32_t logged = 0;  ///< its number for logs, see FrameLog

    static constexpr std::int64_t NOT_MEASURED = -1;
};

/// How long the last frames took, by a clock that nobody can set. Reads it twice around each swap, and twice
/// around the layer's own work if the layer reports that. One thread at a time; allocates nothing.
class FrameTimes {
public:
    static constexpr std::size_t HISTORY = 256;

    /// Call these at the moments of a frame, in this order. A repeated call replaces the earlier one. The
    /// first and the last may be left out.
    void onHook();     ///< the layer has been called
    void onSwap();     ///< the real swap is about to be called
    void onSwapped();  ///< it has returned
    void onLeft();     ///< the layer returns to the application

    /// The layer does not tell any more when it is called.
    void forgetHook() { mHookedAt = 0; }

    /// Ends the frame whose swap has returned. Returns whether its length is known, which needs a frame
    /// before it.
    bool finish();

    /// The current frame's name.
    std::uint32_t name() const { return static_cast<std::uint32_t>(mCount); }

    /// When the swap of the current frame returned.
    std::uint64_t swappedAt() const { return mSwappedAt; }

    /// Notes a number of the last frame's, which must be there.
    void setLogged(std::uint32_t number) { mFrames[(mCount - 1) % HISTORY].logged = number; }

    /// The next frame does not follow the last one directly.
    void restart() { mHasSwapped = false; }

    /// Sets the GPU's time for a frame, which comes late. Returns the frame, or null when it is no longer
    /// stored.
    const FrameTime* setGpu(std::uint32_t name, std::uint64_t nanoseconds);

    std::size_t size() const { return std::min(static_cast<std::size_t>(mCount), HISTORY); }

    /// Finished frames so far.
    std::uint64_t count() const { return mCount; }

    /// The overlay's part of the last frame, if there is one.
    std::int64_t lastOverlay() const { return mCount == 0 ? FrameTime::NOT_MEASURED : ago(0).overlay; }

    /// Returns a frame; 0 is the last one. `frames` must be below size().
    const FrameTime& ago(std::size_t frames) const { return mFrames[(mCount - 1 - frames) % HISTORY]; }

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
