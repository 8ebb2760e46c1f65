#include "vulkan/timing/AttachmentRecords.h"

#include <algorithm>
#include <new>
#include <utility>

namespace vulkan {

namespace {

template <typename Map>
void put(std::mutex& mutex, Map& map, typename Map::key_type key, typename Map::mapped_type value) {
    try {
        const std::lock_guard<std::mutex> lock(mutex);
        map[key] = std::move(value);
    } catch (const std::bad_alloc&) {
        // It is not known.
    }
}

}  // namespace

template <typename Info>
void AttachmentRecords::addRenderPass(VkRenderPass renderPass, const Info& info) {
    std::vector<VkFormat> formats;
    try {
        formats.reserve(info.attachmentCount);
    } catch (const std::bad_alloc&) {
        return;
    }
    for (std::uint32_t i = 0; i < info.attachmentCount; ++i) {
        formats.push_back(info.pAttachments[i].format);
    }
    put(mMutex, mRenderPasses, renderPass, std::move(formats));
}

template void AttachmentRecords::addRenderPass(VkRenderPass, const VkRenderPassCreateInfo&);
template void AttachmentRecords::addRenderPass(VkRenderPass, const VkRenderPassCreateInfo2&);

void AttachmentRecords::addFramebuffer(VkFramebuffer framebuffer, const VkFramebufferCreateInfo& info) {
    put(mMutex, mFramebuffers, framebuffer, {info.width, info.height});
}

void AttachmentRecords::addImage(VkImage image, VkExtent2D size) {
    put(mMutex, mImages, image, size);
}

void AttachmentRecords::addView(VkImageView view, const VkImageViewCreateInfo& info) {
    View made = {info.format, {0, 0}};
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        const auto image = mImages.find(info.image);
        if (image != mImages.end()) {
            const std::uint32_t level = info.subresourceRange.baseMipLevel;
            made.size = {std::max(image->second.width >> level, 1U),
                         std::max(image->second.height >> level, 1U)};
        }
    }
    put(mMutex, mViews, view, made);
}

void AttachmentRecords::removeRenderPass(VkRenderPass renderPass) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mRenderPasses.erase(renderPass);
}

void AttachmentRecords::removeFramebuffer(VkFramebuffer framebuffer) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mFramebuffers.erase(framebuffer);
}

void AttachmentRecords::removeImage(VkImage image) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mImages.erase(image);
}

void AttachmentRecords::removeView(VkImageView view) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mViews.erase(view);
}

PassTargets AttachmentRecords::targetsOf(const VkRenderPassBeginInfo& info) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    PassTargets targets;
    const auto framebuffer = mFramebuffers.find(info.framebuffer);
    if (framebuffer != mFramebuffers.end()) {
        targets.size = framebuffer->second;
    }
    const auto renderPass = mRenderPasses.find(info.renderPass);
    if (renderPass != mRenderPasses.end()) {
        targets.formats = renderPass->second;
    }
    return targets;
}

PassTargets AttachmentRecords::targetsOf(const VkRenderingInfo& info) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    PassTargets targets;
    const auto addView = [&](VkImageView handle) {
        const auto view = mViews.find(handle);
        if (view != mViews.end()) {
            targets.formats.push_back(view->second.format);
            targets.size = targets.size.width == 0 ? view->second.size : targets.size;
        }
    };
    const auto add = [&](const VkRenderingAttachmentInfo* attachment) {
        if (attachment != nullptr) {
            addView(attachment->imageView);
            if (attachment->resolveMode != VK_RESOLVE_MODE_NONE) {
                addView(attachment->resolveImageView);
            }
        }
    };
    for (std::uint32_t i = 0; i < info.colorAttachmentCount; ++i) {
        add(&info.pColorAttachments[i]);
    }
    add(info.pDepthAttachment);
    if (info.pDepthAttachment == nullptr || info.pStencilAttachment == nullptr ||
        info.pDepthAttachment->imageView != info.pStencilAttachment->imageView) {
        add(info.pStencilAttachment);
    }
    if (targets.size.width == 0) {  // of a pass without attachments, all that is drawn
        targets.size = info.renderArea.extent;
    }
    return targets;
}

}  // namespace vulkan
