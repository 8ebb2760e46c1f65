#pragma once

#include <chrono>

namespace drawlist {

/// Decides when to copy the application's picture. A tile-based GPU has to write its tiles to memory for
/// that, so we do it only twice a second.
class PictureTimer {
public:
    static constexpr std::chrono::milliseconds INTERVAL{500};

    /// Whether half a second has passed since the last copy. Ask it in frames that show the picture.
    bool isDue() const { return !mIsTaken || Clock::now() - mTime >= INTERVAL; }

    /// The picture has been copied.
    void restart() {
        mTime = Clock::now();
        mIsTaken = true;
    }

    /// The copy is gone.
    void forget() { mIsTaken = false; }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point mTime;
    bool mIsTaken = false;
};

}  // namespace drawlist
