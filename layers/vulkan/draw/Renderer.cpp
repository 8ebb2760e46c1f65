#include "vulkan/draw/Renderer.h"

namespace vulkan {

namespace {

constexpr VkPipelineStageFlags OUTPUT = VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT;
constexpr VkPipelineStageFlags TRANSFER = VK_PIPELINE_STAGE_TRANSFER_BIT;
constexpr VkAccessFlags DRAWING = VK_ACCESS_COLOR_ATTACHMENT_READ_BIT | VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;

constexpr ImageUse DRAWN = {OUTPUT, DRAWING, VK_IMAGE_LAYOUT_PRESENT_SRC_KHR};
constexpr ImageUse PRESENTED = {VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT, 0, VK_IMAGE_LAYOUT_PRESENT_SRC_KHR};

}  // namespace

Renderer::Renderer(const Gpu& gpu, Pipelines& pipelines, const SwapchainImages& swapchain,
                   std::uint32_t queueFamily, int side)
    : mGpu(gpu),
      mPipelines(pipelines),
      mSwapchain(swapchain),
      mPipeline(pipelines.find(swapchain.format, encodingOf(swapchain.format, swapchain.colorSpace))),
      mTargets(gpu, swapchain, mPipeline.renderPass),
      mRing(gpu, queueFamily),
      mVertices(gpu),
      mGlyphs(gpu, side),
      mGlyphSide(side),
      mThumbnail(gpu, swapchain),
      mReader(gpu, swapchain) {
    createSet();
}

Renderer::~Renderer() {
    mReader.abandon();
    mGpu.vk.DestroyDescriptorPool(mGpu.device, mSetPool, nullptr);
}

void Renderer::createSet() {
    const VkDescriptorPoolSize size = {VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER, 2};
    auto pool = infoOf<VkDescriptorPoolCreateInfo>(VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO);
    pool.maxSets = 1;
    pool.poolSizeCount = 1;
    pool.pPoolSizes = &size;
    check(mGpu.vk.CreateDescriptorPool(mGpu.device, &pool, nullptr, &mSetPool), "vkCreateDescriptorPool");
    const VkDescriptorSetLayout layout = mPipelines.setLayout();
    auto info = infoOf<VkDescriptorSetAllocateInfo>(VK_STRUCTURE_TYPE_DESCRIPTOR_SET_ALLOCATE_INFO);
    info.descriptorPool = mSetPool;
    info.descriptorSetCount = 1;
    info.pSetLayouts = &layout;
    const VkResult result = mGpu.vk.AllocateDescriptorSets(mGpu.device, &info, &mSet);
    if (result != VK_SUCCESS) {
        mGpu.vk.DestroyDescriptorPool(mGpu.device, mSetPool, nullptr);
        check(result, "vkAllocateDescriptorSets");
    }
    const std::array<VkDescriptorImageInfo, 2> images = {
        {{VK_NULL_HANDLE, mGlyphs.view(), VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL},
         {VK_NULL_HANDLE, mThumbnail.view(), VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL}}};
    auto write = infoOf<VkWriteDescriptorSet>(VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET);
    write.dstSet = mSet;
    write.descriptorType = VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER;
    std::array<VkWriteDescriptorSet, 2> writes = {write, write};
    for (std::uint32_t i = 0; i < writes.size(); ++i) {
        writes[i].dstBinding = i;
        writes[i].descriptorCount = 1;
        writes[i].pImageInfo = &images[i];
    }
    mGpu.vk.UpdateDescriptorSets(mGpu.device, writes.size(), writes.data(), 0, nullptr);
}

entry::Obstacle Renderer::show(drawlist::DrawList& list, const Frame& frame, VkSemaphore& drawn) {
    if (frame.queue != mQueue && !mRing.isIdle()) {
        return "its presents change from queue to queue";
    }
    const bool isThumbnailTaken = frame.hasOverlay && mThumbnail.isDue(list);
    const bool hasVertices = frame.hasOverlay && list.batch.vertexCount() != 0;
    if (hasVertices) {
        mVertices.prepare(list, mRing);
    }
    Recording what;
    what.image = frame.image;
    what.vertices = hasVertices ? mVertices.number() : 0;
    what.isAfterAll = frame.waitCount == 0;
    what.hasPicture = list.batch.hasPicture() && mThumbnail.isTaken();
    what.pictureToTexture = what.hasPicture ? mThumbnail.toTexture(list.batch) : Placing();
    const bool comesAgain = frame.hasOverlay && frame.picture.empty() && !isThumbnailTaken &&
                            mThumbnail.isPrepared() && mGlyphs.isUpToDate(list.glyphs);
    VkCommandBuffer commands = mRing.begin(comesAgain ? std::optional(what) : std::nullopt);
    if (commands == VK_NULL_HANDLE) {
        return "the GPU is too far behind";
    }
    mQueue = frame.queue;
    if (!mRing.isRecorded()) {
        record(list, frame, what, isThumbnailTaken, commands);
    }
    drawn = submit(frame, isThumbnailTaken || !frame.picture.empty());
    if (hasVertices) {
        mVertices.onUsed(mRing.current());
    }
    return nullptr;
}

void Renderer::record(drawlist::DrawList& list, const Frame& frame, const Recording& what,
                      bool isThumbnailTaken, VkCommandBuffer commands) {
    if (what.isAfterAll) {
        // Nothing but the order of submissions stands between the application's drawing and this.
        auto barrier = infoOf<VkMemoryBarrier>(VK_STRUCTURE_TYPE_MEMORY_BARRIER);
        barrier.srcAccessMask = VK_ACCESS_MEMORY_WRITE_BIT;
        barrier.dstAccessMask = DRAWING | VK_ACCESS_TRANSFER_READ_BIT;
        mGpu.vk.CmdPipelineBarrier(commands, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, OUTPUT | TRANSFER, 0, 1,
                                   &barrier, 0, nullptr, 0, nullptr);
    }
    VkImage image = mSwapchain.images[frame.image];
    // The semaphores are waited for in these stages.
    constexpr ImageUse ACQUIRED = {OUTPUT | TRANSFER, 0, VK_IMAGE_LAYOUT_PRESENT_SRC_KHR};
    if (frame.hasOverlay) {
        Recording drawn = what;
        mThumbnail.prepare(commands);
        if (isThumbnailTaken) {
            move(mGpu, commands, image, ACQUIRED, COPIED);
            mThumbnail.take(list, image, commands);
            move(mGpu, commands, image, COPIED, DRAWN);
            drawn.hasPicture = true;
            drawn.pictureToTexture = mThumbnail.toTexture(list.batch);
        }
        mGlyphs.update(list.glyphs, commands, mRing);
        for (VkFramebuffer framebuffer : mTargets.framebuffers(frame.image)) {
            auto info = infoOf<VkRenderPassBeginInfo>(VK_STRUCTURE_TYPE_RENDER_PASS_BEGIN_INFO);
            info.renderPass = mPipeline.renderPass;
            info.framebuffer = framebuffer;
            info.renderArea = {{0, 0}, mSwapchain.size};
            mGpu.vk.CmdBeginRenderPass(commands, &info, VK_SUBPASS_CONTENTS_INLINE);
            if (drawn.vertices != 0) {
                recordDraws(drawn, commands);
            }
            mGpu.vk.CmdEndRenderPass(commands);
        }
    }
    if (!frame.picture.empty()) {
        move(mGpu, commands, image, frame.hasOverlay ? DRAWN : ACQUIRED, COPIED);
        mReader.read(frame.picture, image, commands, mRing);
        move(mGpu, commands, image, COPIED, PRESENTED);
    }
}

void Renderer::recordDraws(const Recording& what, VkCommandBuffer commands) {
    const DeviceFunctions& vk = mGpu.vk;
    const auto width = static_cast<float>(mSwapchain.size.width);
    const auto height = static_cast<float>(mSwapchain.size.height);
    const VkViewport viewport = {0.0F, 0.0F, width, height, 0.0F, 1.0F};
    const VkRect2D scissor = {{0, 0}, mSwapchain.size};
    VkBuffer vertices = mVertices.handle();
    vk.CmdBindPipeline(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, mPipeline.pipeline);
    vk.CmdSetViewport(commands, 0, 1, &viewport);
    vk.CmdSetScissor(commands, 0, 1, &scissor);
    vk.CmdBindDescriptorSets(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, mPipelines.layout(), 0, 1, &mSet, 0,
                             nullptr);
    vk.CmdBindVertexBuffers(commands, 0, 1, &vertices, &VertexBuffers::FIRST_VERTEX);
    Placing toClip = mSwapchain.upright().toImage.times({2.0F / width, 2.0F / height});
    toClip.origin -= 1.0F;
    const Placing toGlyphs = Placing().times(glm::vec2(1.0F / static_cast<float>(mGlyphSide)));
    constexpr auto PICTURE = static_cast<std::size_t>(drawlist::Batch::Part::PICTURE);
    for (std::size_t part = 0; part < drawlist::Batch::PARTS; ++part) {
        const bool isPicture = part == PICTURE;
        if (isPicture && !what.hasPicture) {
            continue;
        }
        const Placing toTexture = isPicture ? what.pictureToTexture : toGlyphs;
        const Places places = {toClip.axes, toTexture.axes, toClip.origin, toTexture.origin,
                               isPicture ? 1U : 0U};
        vk.CmdPushConstants(commands, mPipelines.layout(),
                            VK_SHADER_STAGE_VERTEX_BIT | VK_SHADER_STAGE_FRAGMENT_BIT, 0, sizeof(places),
                            &places);
        vk.CmdDrawIndirect(commands, vertices, part * sizeof(VkDrawIndirectCommand), 1,
                           sizeof(VkDrawIndirectCommand));
    }
}

VkSemaphore Renderer::submit(const Frame& frame, bool isCopied) {
    VkSemaphore drawn = mTargets.semaphore(frame.image);
    mStages.assign(frame.waitCount, isCopied ? OUTPUT | TRANSFER : OUTPUT);
    auto info = infoOf<VkSubmitInfo>(VK_STRUCTURE_TYPE_SUBMIT_INFO);
    info.waitSemaphoreCount = frame.waitCount;
    info.pWaitSemaphores = frame.waits;
    info.pWaitDstStageMask = mStages.data();
    info.signalSemaphoreCount = 1;
    info.pSignalSemaphores = &drawn;
    mRing.submit(frame.queue, info, frame.stamp);
    return drawn;
}

}  // namespace vulkan
