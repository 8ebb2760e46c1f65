#include "vulkan/timing/SubmissionCopy.h"

#include <algorithm>
#include <new>

namespace vulkan {

namespace {

/// Some of what a batch may carry has a value for each command buffer, or says something that each must be.
bool canGrow(const VkSubmitInfo& submit) {
    const auto* const chain = static_cast<const VkBaseInStructure*>(submit.pNext);
    return submit.commandBufferCount != 0 &&
           (chain == nullptr ||
            (chain->sType == VK_STRUCTURE_TYPE_TIMELINE_SEMAPHORE_SUBMIT_INFO && chain->pNext == nullptr));
}

bool canGrow(const VkSubmitInfo2& submit) {
    return submit.commandBufferInfoCount != 0 && submit.pNext == nullptr &&
           (submit.flags & VK_SUBMIT_PROTECTED_BIT) == 0;
}

}  // namespace

const VkSubmitInfo* SubmissionCopy::withFirst(VkCommandBuffer first, std::uint32_t count,
                                              const VkSubmitInfo* submits) {
    const VkSubmitInfo* const end = submits + count;
    const VkSubmitInfo* const batch =
        std::find_if(submits, end, [](const VkSubmitInfo& each) { return each.commandBufferCount != 0; });
    if (batch == end || !canGrow(*batch)) {
        return submits;
    }
    try {
        mCommands.assign({first});
        mCommands.insert(mCommands.end(), batch->pCommandBuffers,
                         batch->pCommandBuffers + batch->commandBufferCount);
        mSubmits.assign(submits, end);
    } catch (const std::bad_alloc&) {
        return submits;
    }
    VkSubmitInfo& changed = mSubmits[static_cast<std::size_t>(batch - submits)];
    changed.commandBufferCount += 1;
    changed.pCommandBuffers = mCommands.data();
    return mSubmits.data();
}

const VkSubmitInfo2* SubmissionCopy::withFirst(VkCommandBuffer first, std::uint32_t count,
                                               const VkSubmitInfo2* submits) {
    const VkSubmitInfo2* const end = submits + count;
    const VkSubmitInfo2* const batch = std::find_if(
        submits, end, [](const VkSubmitInfo2& each) { return each.commandBufferInfoCount != 0; });
    if (batch == end || !canGrow(*batch)) {
        return submits;
    }
    try {
        mCommands2.assign({{VK_STRUCTURE_TYPE_COMMAND_BUFFER_SUBMIT_INFO, nullptr, first, 0}});
        mCommands2.insert(mCommands2.end(), batch->pCommandBufferInfos,
                          batch->pCommandBufferInfos + batch->commandBufferInfoCount);
        mSubmits2.assign(submits, end);
    } catch (const std::bad_alloc&) {
        return submits;
    }
    VkSubmitInfo2& changed = mSubmits2[static_cast<std::size_t>(batch - submits)];
    changed.commandBufferInfoCount += 1;
    changed.pCommandBufferInfos = mCommands2.data();
    return mSubmits2.data();
}

}  // namespace vulkan
