// What the layer changes in the application's structures, and the clocks that it relates.

#include "vulkan/entry/PresentCopy.h"
#include "vulkan/timing/Calibration.h"
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

TEST(PresentCopyTest, SaysThatTheWholePictureIsNewAndCarriesAllElse) {
    const std::array<VkSwapchainKHR, 2> swapchains = {handle<VkSwapchainKHR>(1), handle<VkSwapchainKHR>(2)};
    const VkRectLayerKHR corner = {{1, 2}, {3, 4}, 0};
    const std::array<VkPresentRegionKHR, 2> region = {{{1, &corner}, {1, &corner}}};
    const std::array<std::uint64_t, 2> ids = {7, 8};
    const VkPresentTimesInfoGOOGLE times = {VK_STRUCTURE_TYPE_PRESENT_TIMES_INFO_GOOGLE, nullptr, 2, nullptr};
    const VkPresentRegionsKHR regions = {VK_STRUCTURE_TYPE_PRESENT_REGIONS_KHR, &times, 2, region.data()};
    const VkSwapchainPresentFenceInfoEXT fences = {VK_STRUCTURE_TYPE_SWAPCHAIN_PRESENT_FENCE_INFO_EXT,
                                                   const_cast<VkPresentRegionsKHR*>(&regions), 2, nullptr};
    const VkPresentIdKHR id = {VK_STRUCTURE_TYPE_PRESENT_ID_KHR, &fences, 2, ids.data()};
    VkPresentInfoKHR present = {
        VK_STRUCTURE_TYPE_PRESENT_INFO_KHR, &id, 0, nullptr, 2, swapchains.data(), nullptr, nullptr};
    SwapchainImages images;
    images.size = {640, 480};
    images.layers = 2;
    PresentCopy copy;
    ASSERT_EQ(copy.prepare(present, 1, images), nullptr);
    const VkPresentInfoKHR& changed = copy.waitingFor(handle<VkSemaphore>(5));
    EXPECT_TRUE(changed.waitSemaphoreCount == 1 && *changed.pWaitSemaphores == handle<VkSemaphore>(5));
    const auto* const carriedId = static_cast<const VkPresentIdKHR*>(changed.pNext);
    EXPECT_TRUE(carriedId->sType == id.sType && carriedId->pPresentIds == ids.data());
    const auto* const carriedFences = static_cast<const VkSwapchainPresentFenceInfoEXT*>(carriedId->pNext);
    EXPECT_TRUE(carriedFences->sType == fences.sType && carriedFences->swapchainCount == 2);
    const auto* const whole = reinterpret_cast<const VkPresentRegionsKHR*>(carriedFences->pNext);
    EXPECT_TRUE(whole->sType == regions.sType && whole->pNext == &times);
    EXPECT_EQ(whole->pRegions[0].pRectangles, &corner) << "of another swapchain";
    ASSERT_EQ(whole->pRegions[1].rectangleCount, 2U);
    const VkRectLayerKHR& second = whole->pRegions[1].pRectangles[1];
    EXPECT_TRUE(second.offset.x == 0 && second.extent.width == 640 && second.extent.height == 480 &&
                second.layer == 1);

    const VkBaseInStructure behind = {static_cast<VkStructureType>(0x7FFFFF00), nullptr};
    const VkBaseInStructure before = {behind.sType, reinterpret_cast<const VkBaseInStructure*>(&regions)};
    for (const std::uint32_t mask : {1U, 2U}) {
        const VkDeviceGroupPresentInfoKHR group = {VK_STRUCTURE_TYPE_DEVICE_GROUP_PRESENT_INFO_KHR, &regions,
                                                   1, &mask, VK_DEVICE_GROUP_PRESENT_MODE_LOCAL_BIT_KHR};
        present.pNext = &group;
        EXPECT_EQ(copy.prepare(present, 0, images) == nullptr, mask == 1);
    }
    present.pNext = &behind;
    EXPECT_EQ(copy.prepare(present, 0, images), nullptr) << "nothing leads on from it that has to be copied";
    present.pNext = &before;
    EXPECT_NE(copy.prepare(present, 0, images), nullptr);
}

// The device's clock counts in halves of a nanosecond with 36 bits.
TEST(Calibration, SaysWhenATimeStampWasTaken) {
    static std::uint64_t deviceTime = 0;
    static VkResult result = VK_SUCCESS;
    Gpu gpu;
    gpu.isCalibrated = true;
    gpu.vk.GetCalibratedTimestampsEXT = [](VkDevice, std::uint32_t count,
                                           const VkCalibratedTimestampInfoEXT* infos, std::uint64_t* times,
                                           std::uint64_t*) {
        for (std::uint32_t i = 0; i < count; ++i) {
            times[i] = infos[i].timeDomain == VK_TIME_DOMAIN_DEVICE_EXT ? deviceTime : 1000000;
        }
        return result;
    };
    const TimeStampClock clock(36, 0.5F);
    deviceTime = 5000;
    EXPECT_EQ(monotonicTime(gpu, clock, 3000), 999000);
    deviceTime = 500;  // it has wrapped around
    EXPECT_EQ(monotonicTime(gpu, clock, (std::uint64_t{1} << 36U) - 1500), 999000);
    result = VK_ERROR_OUT_OF_HOST_MEMORY;
    EXPECT_EQ(monotonicTime(gpu, clock, 3000), std::nullopt);
    result = VK_SUCCESS;
    gpu.isCalibrated = false;
    EXPECT_EQ(monotonicTime(gpu, clock, 3000), std::nullopt);
}

}  // namespace
}  // namespace vulkan
