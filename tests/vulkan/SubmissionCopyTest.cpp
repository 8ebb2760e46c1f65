#include "vulkan/timing/SubmissionCopy.h"

#include <gtest/gtest.h>

#include <array>

namespace vulkan {
namespace {

/// Any handles will do: nothing is called.
template <typename Handle>
Handle handle(std::size_t number) {
    return reinterpret_cast<Handle>(number);  // NOLINT(performance-no-int-to-ptr)
}

const std::array<VkCommandBuffer, 2> COMMANDS = {handle<VkCommandBuffer>(1), handle<VkCommandBuffer>(2)};
const auto FIRST = handle<VkCommandBuffer>(9);

TEST(SubmissionCopyTest, PutsACommandBufferOnlyWhereNothingElseCounts) {
    const VkBaseInStructure timeline = {VK_STRUCTURE_TYPE_TIMELINE_SEMAPHORE_SUBMIT_INFO, nullptr};
    const VkBaseInStructure group = {VK_STRUCTURE_TYPE_DEVICE_GROUP_SUBMIT_INFO, nullptr};
    const VkBaseInStructure both = {VK_STRUCTURE_TYPE_TIMELINE_SEMAPHORE_SUBMIT_INFO, &group};
    SubmissionCopy copy;
    for (const VkBaseInStructure* const chain :
         {static_cast<const VkBaseInStructure*>(nullptr), &timeline, &group, &both}) {
        const bool canGrow = chain == nullptr || chain == &timeline;
        const VkSubmitInfo empty = {
            VK_STRUCTURE_TYPE_SUBMIT_INFO, &group, 0, nullptr, nullptr, 0, nullptr, 0, nullptr};
        const VkSubmitInfo full = {
            VK_STRUCTURE_TYPE_SUBMIT_INFO, chain, 0, nullptr, nullptr, 2, COMMANDS.data(), 0, nullptr};
        const std::array<VkSubmitInfo, 3> submits = {empty, full, full};
        const VkSubmitInfo* const changed = copy.withFirst(FIRST, submits.size(), submits.data());
        ASSERT_EQ(changed != submits.data(), canGrow);
        EXPECT_EQ(changed[1].pNext, chain);
        EXPECT_EQ(changed[1].commandBufferCount, canGrow ? 3U : 2U);
        EXPECT_EQ(changed[1].pCommandBuffers[0], canGrow ? FIRST : COMMANDS[0]);
        EXPECT_EQ(changed[1].pCommandBuffers[canGrow ? 2 : 1], COMMANDS[1]);
        EXPECT_EQ(changed[2].pCommandBuffers, COMMANDS.data()) << "only the first";
    }
    EXPECT_EQ(copy.withFirst(FIRST, 0, static_cast<const VkSubmitInfo*>(nullptr)), nullptr);
    for (const VkSubmitFlags flags : {0U, static_cast<VkSubmitFlags>(VK_SUBMIT_PROTECTED_BIT)}) {
        const VkCommandBufferSubmitInfo commands = {VK_STRUCTURE_TYPE_COMMAND_BUFFER_SUBMIT_INFO, nullptr,
                                                    COMMANDS[0], 1};
        const VkSubmitInfo2 submit = {
            VK_STRUCTURE_TYPE_SUBMIT_INFO_2, nullptr, flags, 0, nullptr, 1, &commands, 0, nullptr};
        const VkSubmitInfo2* const changed = copy.withFirst(FIRST, 1, &submit);
        EXPECT_EQ(changed->commandBufferInfoCount, flags == 0 ? 2U : 1U);
        EXPECT_EQ(changed->pCommandBufferInfos[0].commandBuffer, flags == 0 ? FIRST : COMMANDS[0]);
    }
}

}  // namespace
}  // namespace vulkan
