#include "vulkan/timing/FrameStamps.h"

#include <exception>

namespace vulkan {

FrameStamps::FrameStamps(const Gpu& gpu, std::uint32_t queueFamily, const TimeStampClock& clock)
    : mGpu(gpu), mClock(clock) {
    try {
        create(queueFamily);
    } catch (const std::exception&) {
        destroy();
        throw;
    }
}

FrameStamps::~FrameStamps() {
    destroy();
}

void FrameStamps::create(std::uint32_t queueFamily) {
    auto queries = infoOf<VkQueryPoolCreateInfo>(VK_STRUCTURE_TYPE_QUERY_POOL_CREATE_INFO);
    queries.queryType = VK_QUERY_TYPE_TIMESTAMP;
    queries.queryCount = 2 * LONGEST_DELAY;
    check(mGpu.vk.CreateQueryPool(mGpu.device, &queries, nullptr, &mQueries), "vkCreateQueryPool");
    auto pool = infoOf<VkCommandPoolCreateInfo>(VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO);
    pool.queueFamilyIndex = queueFamily;
    check(mGpu.vk.CreateCommandPool(mGpu.device, &pool, nullptr, &mPool), "vkCreateCommandPool");
    for (std::uint32_t slot = 0; slot < LONGEST_DELAY; ++slot) {
        record(slot, 0);
        record(slot, 1);
    }
}

void FrameStamps::destroy() {
    mGpu.vk.DestroyCommandPool(mGpu.device, mPool, nullptr);
    mGpu.vk.DestroyQueryPool(mGpu.device, mQueries, nullptr);
}

/// Once for all frames.
void FrameStamps::record(std::uint32_t slot, std::uint32_t stamp) {
    auto info = infoOf<VkCommandBufferAllocateInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO);
    info.commandPool = mPool;
    info.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
    info.commandBufferCount = 1;
    VkCommandBuffer commands = VK_NULL_HANDLE;
    check(mGpu.vk.AllocateCommandBuffers(mGpu.device, &info, &commands), "vkAllocateCommandBuffers");
    check(mGpu.setLoaderData(mGpu.device, commands), "the loader's callback");
    auto begin = infoOf<VkCommandBufferBeginInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO);
    // A frame that got no second stamp begins anew while the first one may be under way.
    begin.flags = VK_COMMAND_BUFFER_USAGE_SIMULTANEOUS_USE_BIT;
    check(mGpu.vk.BeginCommandBuffer(commands, &begin), "vkBeginCommandBuffer");
    if (stamp == 0) {
        mGpu.vk.CmdResetQueryPool(commands, mQueries, 2 * slot, 2);
    }
    mGpu.vk.CmdWriteTimestamp(commands, VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT, mQueries, 2 * slot + stamp);
    check(mGpu.vk.EndCommandBuffer(commands), "vkEndCommandBuffer");
    mSlots[slot].commands[stamp] = commands;
}

void FrameStamps::expect(std::uint32_t frame) {
    mIsOpen = false;
    mIsExpected = mStamped - mRead < LONGEST_DELAY;
    if (mIsExpected) {
        mSlots[mStamped % LONGEST_DELAY].frame = frame;
    }
}

VkCommandBuffer FrameStamps::end() {
    mIsExpected = false;
    return mIsOpen ? mSlots[mStamped % LONGEST_DELAY].commands[1] : VK_NULL_HANDLE;
}

void FrameStamps::onSubmitted(const SubmissionRing& ring) {
    if (mIsOpen) {
        mIsOpen = false;
        Slot& slot = mSlots[mStamped % LONGEST_DELAY];
        slot.ring = ring.number();
        slot.submission = ring.current();
        ++mStamped;
    }
}

bool FrameStamps::take(SubmissionRing& ring, scene::FrameTimer::Time& time) {
    while (mRead != mStamped) {
        const std::uint32_t index = mRead % LONGEST_DELAY;
        const Slot& slot = mSlots[index];
        const bool isOfRing = slot.ring == ring.number();
        // Before the GPU has set them back, queries have their last results.
        if (isOfRing && !ring.isDone(slot.submission)) {
            return false;
        }
        ++mRead;
        std::array<std::uint64_t, 2> stamps = {};
        if (isOfRing &&
            mGpu.vk.GetQueryPoolResults(mGpu.device, mQueries, 2 * index, 2, sizeof(stamps), stamps.data(),
                                        sizeof(stamps[0]), VK_QUERY_RESULT_64_BIT) == VK_SUCCESS) {
            time = {slot.frame, mClock.nanoseconds(stamps[0], stamps[1])};
            return true;
        }
    }
    return false;
}

}  // namespace vulkan
