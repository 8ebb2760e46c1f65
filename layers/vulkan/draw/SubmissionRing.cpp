#include "vulkan/draw/SubmissionRing.h"

#include <algorithm>
#include <array>
#include <atomic>

namespace vulkan {

namespace {

/// The application can have as many frames under way as its swapchain has images; this is more.
constexpr std::size_t MAX_SLOTS = 32;

/// As many are kept for being submitted again: some pictures of a swapchain times some buffers of vertices.
constexpr std::size_t MAX_RECORDED = 16;

constexpr std::uint64_t LONGEST_WAIT_NS = 5'000'000'000;

/// Relaxed order: only the number counts.
std::atomic<std::uint64_t> gRings = 0;

}  // namespace

SubmissionRing::SubmissionRing(const Gpu& gpu, std::uint32_t queueFamily)
    : mGpu(gpu), mNumber(gRings.fetch_add(1, std::memory_order_relaxed) + 1) {
    mSlots.reserve(MAX_SLOTS);
    auto info = infoOf<VkCommandPoolCreateInfo>(VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO);
    info.flags = VK_COMMAND_POOL_CREATE_RESET_COMMAND_BUFFER_BIT;
    info.queueFamilyIndex = queueFamily;
    check(mGpu.vk.CreateCommandPool(mGpu.device, &info, nullptr, &mPool), "vkCreateCommandPool");
}

SubmissionRing::~SubmissionRing() {
    for (const Slot& slot : mSlots) {
        mGpu.vk.DestroyFence(mGpu.device, slot.fence, nullptr);
    }
    mGpu.vk.DestroyCommandPool(mGpu.device, mPool, nullptr);
}

VkCommandBuffer SubmissionRing::begin(const std::optional<Recording>& wanted) {
    mChosen = choose(wanted);
    if (mChosen == nullptr) {
        return VK_NULL_HANDLE;
    }
    mCurrent = mSubmitted + 1;
    mIsRecorded = wanted && mChosen->recording == wanted;
    if (!mIsRecorded) {
        mChosen->recording.reset();  // until it is complete
        auto info = infoOf<VkCommandBufferBeginInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO);
        info.flags = wanted ? 0 : VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
        check(mGpu.vk.BeginCommandBuffer(mChosen->commands, &info), "vkBeginCommandBuffer");
        mWanted = wanted;
    }
    return mChosen->commands;
}

/// One that has what is wanted; else one that has nothing of use, a new one, or the one that was used least
/// recently. Null when all are in use.
SubmissionRing::Slot* SubmissionRing::choose(const std::optional<Recording>& wanted) {
    Slot* blank = nullptr;
    Slot* oldest = nullptr;
    for (Slot& slot : mSlots) {
        if (!isFree(slot)) {
            continue;
        }
        if (wanted && slot.recording == wanted) {
            return &slot;
        }
        Slot*& place = slot.recording ? oldest : blank;
        if (place == nullptr || slot.lastUse < place->lastUse) {
            place = &slot;
        }
    }
    const std::size_t enough = oldest == nullptr ? MAX_SLOTS : MAX_RECORDED;
    if (blank == nullptr && mSlots.size() < enough) {
        mSlots.push_back(create());
        return &mSlots.back();
    }
    return blank != nullptr ? blank : oldest;
}

void SubmissionRing::submit(VkQueue queue, VkSubmitInfo submission, VkCommandBuffer first) {
    Slot& slot = *mChosen;
    if (!mIsRecorded) {
        check(mGpu.vk.EndCommandBuffer(slot.commands), "vkEndCommandBuffer");
        slot.recording = mWanted;
    }
    check(mGpu.vk.ResetFences(mGpu.device, 1, &slot.fence), "vkResetFences");
    const std::array<VkCommandBuffer, 2> both = {first, slot.commands};
    submission.commandBufferCount = first == VK_NULL_HANDLE ? 1 : 2;
    submission.pCommandBuffers = first == VK_NULL_HANDLE ? &slot.commands : both.data();
    check(mGpu.vk.QueueSubmit(queue, 1, &submission, slot.fence), "vkQueueSubmit");
    slot.submission = mCurrent;
    slot.lastUse = mCurrent;
    mSubmitted = mCurrent;
}

bool SubmissionRing::isDone(std::uint64_t submission) {
    for (Slot& slot : mSlots) {
        if (mDone >= submission) {
            break;
        }
        isFree(slot);
    }
    return mDone >= submission;
}

bool SubmissionRing::wait() {
    for (Slot& slot : mSlots) {
        if (slot.submission == 0) {
            continue;
        }
        const VkResult result = mGpu.vk.WaitForFences(mGpu.device, 1, &slot.fence, VK_TRUE, LONGEST_WAIT_NS);
        if (result != VK_SUCCESS && result != VK_ERROR_DEVICE_LOST) {
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
