#pragma once

#include <vulkan/vulkan.h>

#include <cstdint>
#include <vector>

namespace vulkan {

/// A submission of the application's with one command buffer more. All else stays as it is.
class SubmissionCopy {
public:
    /// Puts `first` before the first command buffer, in the same batch, so that the GPU does not come to it
    /// before it may begin with that batch. Returns `submits` where no batch can take it. Valid until the
    /// next call, and as long as the submission. Allocates nothing once warm.
    const VkSubmitInfo* withFirst(VkCommandBuffer first, std::uint32_t count, const VkSubmitInfo* submits);
    const VkSubmitInfo2* withFirst(VkCommandBuffer first, std::uint32_t count, const VkSubmitInfo2* submits);

private:
    std::vector<VkSubmitInfo> mSubmits;
    std::vector<VkCommandBuffer> mCommands;
    std::vector<VkSubmitInfo2> mSubmits2;
    std::vector<VkCommandBufferSubmitInfo> mCommands2;
};

}  // namespace vulkan
