#include "vulkan/draw/RetiredSemaphores.h"

#include <utility>

namespace vulkan {

RetiredSemaphores::~RetiredSemaphores() {
    for (const Entry& entry : mEntries) {
        destroy(entry);
    }
}

void RetiredSemaphores::add(VkQueue queue, std::vector<VkSemaphore> semaphores) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mEntries.push_back({queue, std::move(semaphores)});
    mIsEmpty.store(false, std::memory_order_relaxed);
}

void RetiredSemaphores::onSubmitted(VkQueue queue, SubmissionRing& ring) {
    if (mIsEmpty.load(std::memory_order_relaxed)) {
        return;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    for (std::size_t i = 0; i < mEntries.size();) {
        Entry& entry = mEntries[i];
        if (entry.ring == nullptr && entry.queue == queue) {
            entry.ring = &ring;
            entry.submission = ring.current();
        }
        if (entry.ring == &ring && ring.isDone(entry.submission)) {
            destroy(entry);
            std::swap(entry, mEntries.back());
            mEntries.pop_back();
        } else {
            ++i;
        }
    }
    mIsEmpty.store(mEntries.empty(), std::memory_order_relaxed);
}

void RetiredSemaphores::forget(const SubmissionRing& ring) {
    const std::lock_guard<std::mutex> lock(mMutex);
    for (Entry& entry : mEntries) {
        if (entry.ring == &ring) {
            entry.ring = nullptr;
        }
    }
}

void RetiredSemaphores::destroy(const Entry& entry) {
    for (VkSemaphore semaphore : entry.semaphores) {
        mGpu.vk.DestroySemaphore(mGpu.device, semaphore, nullptr);
    }
}

}  // namespace vulkan
