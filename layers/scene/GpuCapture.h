#pragma once

#include "core/HWcounterThread.h"
#include "core/RenderingApiType.h"
#include "gui/FrameData.h"
#include "scene/RenderPassSource.h"

#include <cstdint>
#include <vector>

namespace scene {

/// Captures one frame of GPU work when the capture key asks for it: the shader activity over one frame's
/// length and the frame's render passes. Rendering thread only; the counters are sampled on a thread of
/// their own meanwhile, and nothing is waited for.
class GpuCapture {
public:
    /// Frames after which passes that are still not known count as unknown: some seconds.
    static constexpr unsigned int LONGEST_WAIT = 600;

    /// `passes` may be null, and outlives the capture otherwise.
    GpuCapture(core::RenderingApiType api, RenderPassSource* passes);

    /// Whether the device has counters of the shaders' activity: it is of a kind whose counters are known.
    static bool hasCounters();

    /// Once a frame, after the pre-swap hook. Starts a capture when its key was pressed, and takes over the
    /// results when one has ended: true in that frame.
    bool onFrame();

    /// Waits for the counters of the capture that runs, if there is one; its results come with the next frame
    /// in which the passes are known.
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
