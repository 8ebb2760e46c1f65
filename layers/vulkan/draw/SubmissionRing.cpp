#include "vulkan/draw/SubmissionRing.h"

#include <algorithm>
#include <atomic>

namespace vulkan {

namespace {

/// The application can have as many frames under way as its swapchain has images; this is more.
constexpr std::size_t MAX_SLOTS = 32;

constexpr std::uint64_t LONGEST_WAIT_NS = 5'000'000'000;

/// Relaxed order: only the number counts.
std::atomic<std::uint64_t> gRings = 0;

}  // namespace

SubmissionRing::SubmissionRing(const Gpu& gpu, std::uint32_t queueFamily)
    : mGpu(gpu), mNumber(gRings.fetch_add(1, std::memory_order_relaxed) + 1) {
    mSlots.reserve(MAX_SLOTS);
    auto info = infoOf<VkCommandPoolCreateInfo>(VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO);
    info.flags = VK_COMMAND_POOL_CREATE_RESET_COMMAND_BUFFER_BIT | VK_COMMAND_POOL_CREATE_TRANSIENT_BIT;
    info.queueFamilyIndex = queueFamily;
    check(mGpu.vk.CreateCommandPool(mGpu.device, &info, nullptr, &mPool), "vkCreateCommandPool");
}

SubmissionRing::~SubmissionRing() {
    for (const Slot& slot : mSlots) {
        mGpu.vk.DestroyFence(mGpu.device, slot.fence, nullptr);
    }
    mGpu.vk.DestroyCommandPool(mGpu.device, mPool, nullptr);
}

VkCommandBuffer SubmissionRing::begin() {
    if (mSlots.empty() || !isFree(mSlots[mNext])) {
        if (mSlots.size() == MAX_SLOTS) {
            return VK_NULL_HANDLE;
        }
        mSlots.insert(mSlots.begin() + static_cast<std::ptrdiff_t>(mNext), create());
    }
    const Slot& slot = mSlots[mNext];
    mCurrent = mSubmitted + 1;
    auto info = infoOf<VkCommandBufferBeginInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO);
    info.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
    check(mGpu.vk.BeginCommandBuffer(slot.commands, &info), "vkBeginCommandBuffer");
    return slot.commands;
}

void SubmissionRing::submit(VkQueue queue, VkSubmitInfo submission) {
    Slot& slot = mSlots[mNext];
    check(mGpu.vk.EndCommandBuffer(slot.commands), "vkEndCommandBuffer");
    check(mGpu.vk.ResetFences(mGpu.device, 1, &slot.fence), "vkResetFences");
    submission.commandBufferCount = 1;
    submission.pCommandBuffers = &slot.commands;
    check(mGpu.vk.QueueSubmit(queue, 1, &submission, slot.fence), "vkQueueSubmit");
    slot.submission = mCurrent;
    mSubmitted = mCurrent;
    mNext = (mNext + 1) % mSlots.size();
}

bool SubmissionRing::isDone(std::uint64_t submission) {
    for (std::size_t i = 0; i < mSlots.size() && mDone < submission; ++i) {
        isFree(mSlots[(mNext + i) % mSlots.size()]);
    }
    return mDone >= submission;
}

bool SubmissionRing::wait() {
    for (Slot& slot : mSlots) {
        if (slot.submission != 0 &&
            mGpu.vk.WaitForFences(mGpu.device, 1, &slot.fence, VK_TRUE, LONGEST_WAIT_NS) == VK_TIMEOUT) {
            return false;
        }
        slot.submission = 0;
    }
    mDone = mSubmitted;
    return true;
}

bool SubmissionRing::isFree(Slot& slot) {
    if (slot.submission == 0) {
        return true;
    }
    const VkResult status = mGpu.vk.GetFenceStatus(mGpu.device, slot.fence);
    if (status == VK_NOT_READY) {
        return false;
    }
    check(status, "vkGetFenceStatus");
    mDone = std::max(mDone, slot.submission);
    slot.submission = 0;
    return true;
}

SubmissionRing::Slot SubmissionRing::create() {
    Slot slot;
    auto info = infoOf<VkCommandBufferAllocateInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO);
    info.commandPool = mPool;
    info.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
    info.commandBufferCount = 1;
    check(mGpu.vk.AllocateCommandBuffers(mGpu.device, &info, &slot.commands), "vkAllocateCommandBuffers");
    check(mGpu.setLoaderData(mGpu.device, slot.commands), "the loader's callback");
    const VkFenceCreateInfo fence = {VK_STRUCTURE_TYPE_FENCE_CREATE_INFO, nullptr, 0};
    check(mGpu.vk.CreateFence(mGpu.device, &fence, nullptr, &slot.fence), "vkCreateFence");
    return slot;
}

}  // namespace vulkan
