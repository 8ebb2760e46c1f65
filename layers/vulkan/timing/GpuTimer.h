#pragma once

#include "scene/FrameTimer.h"

#include <utility>

namespace vulkan {

/// Hands the GPU's time of frames from a queue's FrameStamps to the scene. Rendering thread only.
class GpuTimer : public scene::FrameTimer {
public:
    void beginFrame(std::uint32_t frame, bool isTimed) override {
        mFrame = frame;
        mIsWanted = isTimed;
    }

    bool take(Time& time) override {
        time = mTime;
        return std::exchange(mHasTime, false);
    }

    bool isWanted() const { return mIsWanted; }
    std::uint32_t frame() const { return mFrame; }

    void give(const Time& time) {
        mTime = time;
        mHasTime = true;
    }

private:
    bool mIsWanted = false;
    std::uint32_t mFrame = 0;
    bool mHasTime = false;
    Time mTime;
};

}  // namespace vulkan
