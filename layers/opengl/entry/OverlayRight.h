#pragma once

#include <atomic>

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

    /// Another process has it, for good. Any thread; relaxed order, since nothing else hangs on it.
    bool isRefused() const { return mIsRefused.load(std::memory_order_relaxed); }

private:
    bool mIsGranted = false;
    std::atomic<bool> mIsRefused{false};
};

}  // namespace opengl
