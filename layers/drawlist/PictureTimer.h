#pragma once

#include <chrono>

namespace drawlist {

/// How often the application's picture is taken: copying a surface costs a GPU with tiles a round through its
/// memory, and nobody watches a film in a corner.
class PictureTimer {
public:
    static constexpr std::chrono::milliseconds INTERVAL{500};

    /// Whether half a second has passed since it was taken last. Asked in frames that show it.
    bool isDue() const { return !mIsTaken || Clock::now() - mTime >= INTERVAL; }

    /// It has been taken.
    void restart() {
        mTime = Clock::now();
        mIsTaken = true;
    }

    /// There is none.
    void forget() { mIsTaken = false; }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point mTime;
    bool mIsTaken = false;
};

}  // namespace drawlist
