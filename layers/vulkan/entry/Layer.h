#pragma once

#include "core/RenderingApiType.h"
#include "drawlist/DrawList.h"
#include "drawlist/DrawListFactory.h"
#include "entry/OverlayRight.h"
#include "entry/StatusNote.h"
#include "scene/Overlay.h"
#include "vulkan/entry/Device.h"
#include "vulkan/entry/PresentCopy.h"
#include "vulkan/timing/GpuTimer.h"
#include "vulkan/timing/PassRecorder.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace vulkan {

constexpr core::RenderingApiType LAYER_API = core::RenderingApiType::VULKAN;

/// The overlay of this process (see PerProcess.h): it is shown in one swapchain, the first one that is
/// presented, in that which takes its place, and in another one when it is gone. Any thread. Nothing is
/// thrown.
class Layer {
public:
    /// The application's present, with the overlay in it where that can be. The result is the application's.
    VkResult present(Device& device, VkQueue queue, const VkPresentInfoKHR& info);

    /// `next` was made in the place of `last`.
    void replace(const Swapchain& last, Swapchain& next);

    /// Before the swapchain is destroyed.
    void forget(const Swapchain& swapchain);

    /// Of captures. Any thread.
    PassRecorder& passes() { return mPasses; }

    void onForked() const {}
    void onExit();

private:
    struct Present {
        Device& device;
        VkQueue queue;
        const VkPresentInfoKHR& info;
        Swapchain& swapchain;
        std::uint32_t index;  ///< of it in the present
    };

    Swapchain* choose(const Device& device, const VkPresentInfoKHR& info, std::uint32_t& index,
                      entry::Obstacle& obstacle);
    VkResult presentWith(const Present& present);
    entry::Obstacle draw(const Present& present, VkSemaphore& drawn);
    entry::Obstacle beginFrame();
    entry::Obstacle submit(const Present& present, bool hasOverlay, VkSemaphore& drawn);
    void takeTimes(const Present& present);
    void expectFrame(const Present& present, std::uint32_t shown);
    bool isPictureWanted();
    void fail(Swapchain& swapchain, const char* reason);
    void tellOnce(entry::Obstacle obstacle);
    void report(entry::Obstacle obstacle);
    entry::Obstacle keep(const std::string& text);

    std::mutex mMutex;     ///< around the library's work, the right and the note; no call to Vulkan under it
    bool mHasRun = false;  ///< the process is in a run, its own one if need be
    entry::OverlayRight mRight{LAYER_API};
    entry::StatusNote mStatus{LAYER_API};
    std::deque<std::string> mFailures;   ///< texts of obstacles, kept for good
    std::vector<entry::Obstacle> mTold;  ///< in the log

    /// Where the overlay is shown; what follows is its thread's. Written under the mutex; acquire and
    /// release, since what follows goes with it from thread to thread.
    std::atomic<Swapchain*> mShown = nullptr;
    drawlist::DrawList mList;
    drawlist::DrawListFactory mFactory{mList};
    PassRecorder mPasses;
    GpuTimer mTimer;
    scene::Overlay mOverlay{mFactory, LAYER_API, &mPasses, &mTimer};
    PresentCopy mCopy;
    bool mIsInFrame = false;  ///< the library's frame has begun
    std::string mPicture;     ///< file to write the next picture to; empty for none
};

}  // namespace vulkan
