#include "entry/StatusNote.h"

#include "entry/FrameClock.h"
#include "runs/OverlayNote.h"
#include "utils/SystemInfoHelper.h"

#include <unistd.h>

#include <algorithm>

namespace entry {

namespace {

constexpr std::int64_t PERIOD_MS = 1000;

}  // namespace

void StatusNote::onFrame(Obstacle obstacle, std::int64_t own) {
    constexpr std::uint64_t FRAMES_BETWEEN_LOOKS = 64;
    ++mFrames;
    if (own >= 0) {
        mOwn += static_cast<std::uint64_t>(own);
        ++mOwnFrames;
    }
    if (obstacle == nullptr) {
        mWasShown = true;
        mMissed = 0;
        mReason.clear();
        if (mOwnFrames % FRAMES_BETWEEN_LOOKS == 1 && isTold() && nowMs() - mToldAt >= mRenewal) {
            mRenewal *= 2;
            tell();
        }
    } else {
        mMissed = std::min(mMissed + 1, HELD_FRAMES);
        if (mReason != obstacle) {
            mReason = obstacle;
        }
        if (mMissed < HELD_FRAMES) {
            return;
        }
    }
    if (!isTold() && (!mHasTold || nowMs() - mToldAt >= PERIOD_MS)) {
        tell();
    }
}

void StatusNote::finish() {
    // A few swaps without the overlay after many with it are not worth a note.
    const bool isNews = !mWasShown || mReason.empty();
    if (mFrames != 0 && isNews && !isTold()) {
        tell();
    }
}

void StatusNote::tell() {
    mHasTold = true;
    mToldReason = mReason;
    mToldAt = nowMs();
    platform::writeOverlayNote({getpid(), utils::getProcessName(), static_cast<std::int32_t>(mApi), mWasShown,
                                mFrames, mReason, mOwnFrames == 0 ? 0 : mOwn / mOwnFrames});
}

}  // namespace entry
