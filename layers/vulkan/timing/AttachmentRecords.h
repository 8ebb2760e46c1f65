#pragma once

#include <vulkan/vulkan.h>

#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace vulkan {

/// What a render pass draws into.
struct PassTargets {
    VkExtent2D size = {0, 0};  ///< 0 by 0: not known
    std::vector<VkFormat> formats;
};

/// What the application's render passes, framebuffers, images and views say of attachments: asked for only by
/// captures, which come later than the objects. Any thread. What there is no memory for is not known.
class AttachmentRecords {
public:
    /// `Info` is VkRenderPassCreateInfo or VkRenderPassCreateInfo2.
    template <typename Info>
    void addRenderPass(VkRenderPass renderPass, const Info& info);
    void addFramebuffer(VkFramebuffer framebuffer, const VkFramebufferCreateInfo& info);
    void addImage(VkImage image, VkExtent2D size);
    void addView(VkImageView view, const VkImageViewCreateInfo& info);

    void removeRenderPass(VkRenderPass renderPass);
    void removeFramebuffer(VkFramebuffer framebuffer);
    void removeImage(VkImage image);
    void removeView(VkImageView view);

    PassTargets targetsOf(const VkRenderPassBeginInfo& info) const;
    PassTargets targetsOf(const VkRenderingInfo& info) const;

private:
    struct View {
        VkFormat format;
        VkExtent2D size;  ///< of its largest level; 0 by 0: not known
    };

    mutable std::mutex mMutex;
    std::unordered_map<VkRenderPass, std::vector<VkFormat>> mRenderPasses;
    std::unordered_map<VkFramebuffer, VkExtent2D> mFramebuffers;
    std::unordered_map<VkImage, VkExtent2D> mImages;
    std::unordered_map<VkImageView, View> mViews;
};

}  // namespace vulkan
