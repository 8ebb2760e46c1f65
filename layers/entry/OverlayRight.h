#pragma once

#include "core/RenderingApiType.h"
#include "entry/FrameClock.h"
#include "entry/Obstacle.h"

#include <atomic>
#include <cstdint>
#include <limits>

namespace entry {

/// Whether the layer of an API shows the overlay in this process: in a run, the first process that presents a
/// frame does, and in a process the API that it presents with first.
class OverlayRight {
public:
    explicit OverlayRight(core::RenderingApiType api) : mApi(api) {}

    /// Call it before the process's first frame hook, and in each frame until it returns null: then the right
    /// is granted. Costs some file operations. One thread at a time, together with isGranted().
    Obstacle ask();

    core::RenderingApiType api() const { return mApi; }

    /// Once true, always true.
    bool isGranted() const { return mIsGranted; }

    /// Another process or API has it, and may still have it: for two seconds after each answer. Any thread;
    /// relaxed order, since nothing else hangs on it.
    bool isRefused() const { return nowMs() < mRefusedUntil.load(std::memory_order_relaxed); }

private:
    core::RenderingApiType mApi;
    bool mIsGranted = false;
    std::atomic<std::int64_t> mRefusedUntil{std::numeric_limits<std::int64_t>::min()};
};

}  // namespace entry
