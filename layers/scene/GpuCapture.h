#pragma once

#include "core/HWcounterThread.h"
#include "core/RenderingApiType.h"
#include "gui/FrameData.h"
#include "scene/RenderPassSource.h"

#include <cstdint>
#include <vector>

namespace scene {

/// Captures one frame of GPU work when the user presses the capture key: the shader activity over one frame's
/// length and the frame's render passes. Rendering thread only. Another thread samples the counters
/// meanwhile, and no call waits for it.
class GpuCapture {
public:
    /// How many frames (some seconds) a capture waits for its passes.
    static constexpr unsigned int LONGEST_WAIT = 600;

    /// `passes` may be null; otherwise it must outlive this object.
    GpuCapture(core::RenderingApiType api, RenderPassSource* passes);

    /// Whether the device has counters of shader activity: we know the counters of its kind.
    static bool hasCounters();

    /// Call it once a frame, after the pre-swap hook. Starts a capture when its key was pressed. When one has
    /// ended, fetches the results and returns true.
    bool onFrame();

    /// Waits for the counters of a running capture, if any. Its results come with the next frame in which the
    /// passes are known.
    void settle() const;

    /// Results of the last capture. Without counters the series are empty; without known passes the frame
    /// is not valid.
    std::vector<core::ShaderActivity> mVertexActivity;
    std::vector<core::ShaderActivity> mFragmentActivity;
    gui::FrameData mFrame;

private:
    void start(std::uint32_t frameUs);
    bool arePassesPending();
    void finish();

    core::HWcounterThread mCounters;
    RenderPassSource* mPasses;
    RenderPassSource::Progress mProgress = RenderPassSource::Progress::NONE;
    unsigned int mFramesWaited = 0;
    bool mIsRunning = false;
    bool mHasFrameStart = false;
    std::uint32_t mFrameStartUs = 0;
};

}  // namespace scene
