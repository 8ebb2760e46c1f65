#pragma once

#include "vulkan/draw/SubmissionRing.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

namespace vulkan {

/// Semaphores of swapchains that are gone. No fence tells when a present has waited for its semaphore; what
/// is submitted to the same queue after it and has been done does. Any thread.
class RetiredSemaphores {
public:
    explicit RetiredSemaphores(const Gpu& gpu) : mGpu(gpu) {}

    /// When nothing of the device is in use any more.
    ~RetiredSemaphores();
    RetiredSemaphores(const RetiredSemaphores&) = delete;
    RetiredSemaphores& operator=(const RetiredSemaphores&) = delete;

    void add(VkQueue queue, std::vector<VkSemaphore> semaphores);

    /// After a submission of the ring to the queue. Throws Failure.
    void onSubmitted(VkQueue queue, SubmissionRing& ring);

    /// Before the ring is destroyed.
    void forget(const SubmissionRing& ring);

private:
    struct Entry {
        VkQueue queue;
        std::vector<VkSemaphore> semaphores;
        const SubmissionRing* ring = nullptr;  ///< null: nothing was submitted since
        std::uint64_t submission = 0;
    };

    void destroy(const Entry& entry);

    const Gpu& mGpu;
    std::atomic<bool> mIsEmpty = true;  ///< relaxed order: a thread that adds sees its own
    std::mutex mMutex;
    std::vector<Entry> mEntries;
};

}  // namespace vulkan
