#pragma once

#include <atomic>
#include <cstdint>
#include <limits>

#include "opengl/entry/FrameClock.h"
#include "opengl/gl/Obstacle.h"

namespace opengl {

/// Whether this process shows the overlay: in a run, the first process that presents a frame does.
class OverlayRight {
public:
    /// Before the process's first frame hook, and in each frame until it has been granted: null then. Some
    /// file operations. One thread at a time, as for isGranted().
    Obstacle ask();

    /// For good.
    bool isGranted() const { return mIsGranted; }

    /// Another process has it, and may still have it: for two seconds after each answer. Any thread; relaxed
    /// order, since nothing else hangs on it.
    bool isRefused() const { return nowMs() < mRefusedUntil.load(std::memory_order_relaxed); }

private:
    bool mIsGranted = false;
    std::atomic<std::int64_t> mRefusedUntil{std::numeric_limits<std::int64_t>::min()};
};

}  // namespace opengl
