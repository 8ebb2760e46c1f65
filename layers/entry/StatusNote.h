#pragma once

#include "core/RenderingApiType.h"
#include "entry/Obstacle.h"

#include <cstdint>
#include <string>

namespace entry {

/// Writes the note on whether this process shows the overlay, and why not (runs/OverlayNote.h): when it is
/// first shown, and when a reason has held for HELD_FRAMES; at most once a second. One thread at a time.
class StatusNote {
public:
    static constexpr unsigned int HELD_FRAMES = 10;
    static constexpr std::int64_t FIRST_RENEWAL_MS = 4000;

    explicit StatusNote(core::RenderingApiType api) : mApi(api) {}

    /// Call it after each swap with the reason why it had no overlay, or null, and with the nanoseconds that
    /// the layer took of the frame, negative when it does not know. Allocates nothing while the reason stays;
    /// writes again after some seconds, and then ever more seldom.
    void onFrame(Obstacle obstacle, std::int64_t own = -1);

    /// There will be no more swaps: writes what is not written yet.
    void finish();

private:
    bool isTold() const { return mHasTold && mToldReason == mReason; }
    void tell();

    core::RenderingApiType mApi;
    std::uint64_t mFrames = 0;
    unsigned int mMissed = 0;  ///< swaps since the last one with the overlay, up to HELD_FRAMES
    bool mWasShown = false;
    std::string mReason;  ///< of the last swap; empty when it had the overlay
    bool mHasTold = false;
    std::string mToldReason;
    std::int64_t mToldAt = 0;  ///< in milliseconds
    std::int64_t mRenewal =
        FIRST_RENEWAL_MS;    ///< after this long it says its own time anew, then half as often
    std::uint64_t mOwn = 0;  ///< in nanoseconds, of so many frames
    std::uint64_t mOwnFrames = 0;
};

}  // namespace entry
