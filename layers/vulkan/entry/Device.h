#pragma once

#include "entry/Obstacle.h"
#include "vulkan/draw/Pipelines.h"
#include "vulkan/draw/Renderer.h"
#include "vulkan/draw/RetiredSemaphores.h"
#include "vulkan/entry/ObjectMap.h"
#include "vulkan/timing/AttachmentRecords.h"
#include "vulkan/timing/FrameStamps.h"
#include "vulkan/timing/PassRecorder.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace vulkan {

/// An instance of the application.
struct Instance {
    VkInstance handle = VK_NULL_HANDLE;
    InstanceFunctions functions;
    bool isComplete = false;      ///< with all functions that the layer needs
    bool hasProperties2 = false;  ///< see Calibration.h
};

/// A swapchain of the application. Used by the thread that presents or destroys it.
struct Swapchain {
    VkSwapchainKHR handle = VK_NULL_HANDLE;
    SwapchainImages images;
    entry::Obstacle obstacle = nullptr;  ///< why it is left alone
    std::unique_ptr<Renderer> renderer;  ///< made when there is something to show
    std::uint32_t family = 0;            ///< of the queues that the renderer works for
};

/// A queue that the application has asked for.
struct Queue {
    std::uint32_t family;
    std::unique_ptr<FrameStamps> stamps;  ///< made when frames are timed there; used as the queue is
    bool isUntimed = false;               ///< they could not be made
};

/// A device of the application. Any thread.
class Device {
public:
    /// `family` of a queue that is no queue of the device's.
    static constexpr std::uint32_t NO_FAMILY = ~0U;

    /// `isComplete`: with all functions that the layer needs.
    Device(const Instance& instance, const Gpu& gpu, bool isComplete);

    /// Before the device is destroyed: takes out what the layer made in it.
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    const Gpu& gpu() const { return mGpu; }

    void addQueue(VkQueue queue, std::uint32_t family);
    std::uint32_t familyOf(VkQueue queue) const;
    bool canDraw(std::uint32_t family) const;

    /// Null for one that the application has not asked for.
    Queue* findQueue(VkQueue queue) const { return mQueues.find(queue); }

    /// What the time stamps of a queue count; nothing where it has none.
    TimeStampClock clockOf(const Queue& queue) const;

    /// The same for stamps in the application's command buffers, which do not tell their family: nothing
    /// where any family that draws has none.
    TimeStampClock passClockOf(const Queue& queue) const {
        return mCanStampPasses ? clockOf(queue) : TimeStampClock();
    }

    /// The next submission to the queue begins a frame of that name, which is timed.
    void expectFrame(VkQueue queue, std::uint32_t frame);

    /// Null unless the next submission to the queue does. In any submission.
    FrameStamps* expectingStamps(VkQueue queue) const;
    void forgetExpectation() { mExpecting.store(VK_NULL_HANDLE, std::memory_order_relaxed); }

    AttachmentRecords& attachments() { return mAttachments; }
    PassRecorder::Queries& passQueries() { return mPassQueries; }

    /// The application's function, for which uses are added that drawing needs and the surface allows, unless
    /// it fails with them. `made` is what the layer knows of the new swapchain; null after a failure.
    VkResult createSwapchain(const VkSwapchainCreateInfoKHR& info, const VkAllocationCallbacks* allocator,
                             VkSwapchainKHR* handle, Swapchain*& made);

    /// Of swapchains that were made together, which are left alone.
    void addSharedSwapchains(std::uint32_t count, const VkSwapchainKHR* handles);
    void destroySwapchain(VkSwapchainKHR handle, const VkAllocationCallbacks* allocator);
    Swapchain* findSwapchain(VkSwapchainKHR handle) const { return mSwapchains.find(handle); }

    /// The swapchain's renderer for queues of a family. Throws Failure.
    Renderer& renderer(Swapchain& swapchain, std::uint32_t family, drawlist::DrawList& list);

    /// After each submission of the renderer's.
    void onSubmitted(Renderer& renderer) { mRetired.onSubmitted(renderer.queue(), renderer.ring()); }

private:
    void release(Swapchain& swapchain);
    entry::Obstacle findObstacle(const VkSwapchainCreateInfoKHR& info) const;
    VkImageUsageFlags possibleUses(const VkSwapchainCreateInfoKHR& info) const;
    void readImages(Swapchain& swapchain);

    const Instance& mInstance;
    const Gpu mGpu;
    const bool mIsComplete;
    std::vector<VkQueueFamilyProperties> mFamilies;
    bool mCanStampPasses = true;
    std::optional<Pipelines> mPipelines;
    RetiredSemaphores mRetired;
    AttachmentRecords mAttachments;
    PassRecorder::Queries mPassQueries;
    ObjectMap<VkQueue, Queue> mQueues;
    /// The queue with the frame that is expected. Relaxed order: what belongs to it is used as it is.
    std::atomic<VkQueue> mExpecting = VK_NULL_HANDLE;
    ObjectMap<VkSwapchainKHR, Swapchain> mSwapchains;
};

}  // namespace vulkan
