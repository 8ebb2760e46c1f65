#include "Passes.h"

#include "Check.h"

namespace client {

namespace {

constexpr VkExtent2D SIZE = {256, 128};
constexpr VkFormat FORMAT = VK_FORMAT_R8G8B8A8_UNORM;
constexpr VkPipelineStageFlags OUTPUT = VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT;
constexpr VkAccessFlags WRITTEN = VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;

void wait(VkCommandBuffer commands) {
    auto barrier = infoOf<VkMemoryBarrier>(VK_STRUCTURE_TYPE_MEMORY_BARRIER);
    barrier.srcAccessMask = barrier.dstAccessMask = WRITTEN | VK_ACCESS_COLOR_ATTACHMENT_READ_BIT;
    vkCmdPipelineBarrier(commands, OUTPUT, OUTPUT, 0, 1, &barrier, 0, nullptr, 0, nullptr);
}

}  // namespace

Passes::Passes(VkPhysicalDevice physicalDevice, VkDevice device, VkCommandPool pool) : mDevice(device) {
    auto info = infoOf<VkCommandBufferAllocateInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO);
    info.commandPool = pool;
    info.commandBufferCount = 2;
    check(vkAllocateCommandBuffers(mDevice, &info, mCommands.data()), "vkAllocateCommandBuffers");
    info.level = VK_COMMAND_BUFFER_LEVEL_SECONDARY;
    info.commandBufferCount = 1;
    check(vkAllocateCommandBuffers(mDevice, &info, &mSecondary), "vkAllocateCommandBuffers");
    createImage(physicalDevice);
    createRenderPass();
    const auto begin = infoOf<VkCommandBufferBeginInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO);
    check(vkBeginCommandBuffer(mCommands[0], &begin), "vkBeginCommandBuffer");
    recordLegacy(mCommands[0]);
    check(vkEndCommandBuffer(mCommands[0]), "vkEndCommandBuffer");
}

void Passes::createImage(VkPhysicalDevice physicalDevice) {
    auto image = infoOf<VkImageCreateInfo>(VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO);
    image.imageType = VK_IMAGE_TYPE_2D;
    image.format = FORMAT;
    image.extent = {SIZE.width, SIZE.height, 1};
    image.mipLevels = image.arrayLayers = 1;
    image.samples = VK_SAMPLE_COUNT_1_BIT;
    image.usage = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT;
    check(vkCreateImage(mDevice, &image, nullptr, &mImage), "vkCreateImage");
    VkMemoryRequirements needs;
    vkGetImageMemoryRequirements(mDevice, mImage, &needs);
    VkPhysicalDeviceMemoryProperties memories;
    vkGetPhysicalDeviceMemoryProperties(physicalDevice, &memories);
    auto memory = infoOf<VkMemoryAllocateInfo>(VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO);
    memory.allocationSize = needs.size;
    while ((needs.memoryTypeBits >> memory.memoryTypeIndex & 1U) == 0) {
        ++memory.memoryTypeIndex;
    }
    check(vkAllocateMemory(mDevice, &memory, nullptr, &mMemory), "vkAllocateMemory");
    check(vkBindImageMemory(mDevice, mImage, mMemory, 0), "vkBindImageMemory");
    auto view = infoOf<VkImageViewCreateInfo>(VK_STRUCTURE_TYPE_IMAGE_VIEW_CREATE_INFO);
    view.image = mImage;
    view.viewType = VK_IMAGE_VIEW_TYPE_2D;
    view.format = FORMAT;
    view.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
    check(vkCreateImageView(mDevice, &view, nullptr, &mView), "vkCreateImageView");
}

void Passes::createRenderPass() {
    VkAttachmentDescription attachment = {};
    attachment.format = FORMAT;
    attachment.samples = VK_SAMPLE_COUNT_1_BIT;
    attachment.loadOp = VK_ATTACHMENT_LOAD_OP_CLEAR;
    attachment.finalLayout = VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL;
    const VkAttachmentReference reference = {0, VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL};
    VkSubpassDescription subpass = {};
    subpass.colorAttachmentCount = 1;
    subpass.pColorAttachments = &reference;
    const VkSubpassDependency dependencies[] = {
        {VK_SUBPASS_EXTERNAL, 0, OUTPUT, OUTPUT, WRITTEN, WRITTEN, 0},
        {0, VK_SUBPASS_EXTERNAL, OUTPUT, OUTPUT, WRITTEN, WRITTEN | VK_ACCESS_COLOR_ATTACHMENT_READ_BIT, 0}};
    auto pass = infoOf<VkRenderPassCreateInfo>(VK_STRUCTURE_TYPE_RENDER_PASS_CREATE_INFO);
    pass.attachmentCount = 1;
    pass.pAttachments = &attachment;
    pass.subpassCount = 1;
    pass.pSubpasses = &subpass;
    pass.dependencyCount = 2;
    pass.pDependencies = dependencies;
    check(vkCreateRenderPass(mDevice, &pass, nullptr, &mPass), "vkCreateRenderPass");
    auto framebuffer = infoOf<VkFramebufferCreateInfo>(VK_STRUCTURE_TYPE_FRAMEBUFFER_CREATE_INFO);
    framebuffer.renderPass = mPass;
    framebuffer.attachmentCount = 1;
    framebuffer.pAttachments = &mView;
    framebuffer.width = SIZE.width;
    framebuffer.height = SIZE.height;
    framebuffer.layers = 1;
    check(vkCreateFramebuffer(mDevice, &framebuffer, nullptr, &mFramebuffer), "vkCreateFramebuffer");
}

void Passes::recordLegacy(VkCommandBuffer commands) const {
    const VkClearValue clear = {};
    auto pass = infoOf<VkRenderPassBeginInfo>(VK_STRUCTURE_TYPE_RENDER_PASS_BEGIN_INFO);
    pass.renderPass = mPass;
    pass.framebuffer = mFramebuffer;
    pass.renderArea = {{0, 0}, SIZE};
    pass.clearValueCount = 1;
    pass.pClearValues = &clear;
    vkCmdBeginRenderPass(commands, &pass, VK_SUBPASS_CONTENTS_INLINE);
    vkCmdEndRenderPass(commands);
    wait(commands);
    const auto begin = infoOf<VkSubpassBeginInfo>(VK_STRUCTURE_TYPE_SUBPASS_BEGIN_INFO);
    const auto end = infoOf<VkSubpassEndInfo>(VK_STRUCTURE_TYPE_SUBPASS_END_INFO);
    vkCmdBeginRenderPass2(commands, &pass, &begin);
    vkCmdEndRenderPass2(commands, &end);
    wait(commands);
}

void Passes::recordDynamic(VkCommandBuffer commands, VkRenderingFlags flags) const {
    auto attachment = infoOf<VkRenderingAttachmentInfo>(VK_STRUCTURE_TYPE_RENDERING_ATTACHMENT_INFO);
    attachment.imageView = mView;
    attachment.imageLayout = VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL;
    attachment.loadOp = VK_ATTACHMENT_LOAD_OP_CLEAR;
    auto info = infoOf<VkRenderingInfo>(VK_STRUCTURE_TYPE_RENDERING_INFO);
    info.flags = flags;
    info.renderArea = {{0, 0}, {100, 64}};
    info.layerCount = 1;
    info.colorAttachmentCount = 1;
    info.pColorAttachments = &attachment;
    vkCmdBeginRendering(commands, &info);
    vkCmdEndRendering(commands);
}

void Passes::recordAll() {
    auto begin = infoOf<VkCommandBufferBeginInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO);
    VkCommandBuffer commands = mCommands[1];
    check(vkBeginCommandBuffer(commands, &begin), "vkBeginCommandBuffer");
    recordLegacy(commands);
    recordDynamic(commands, 0);
    wait(commands);
    recordDynamic(commands, VK_RENDERING_SUSPENDING_BIT);
    recordDynamic(commands, VK_RENDERING_RESUMING_BIT);
    wait(commands);
    const auto inherited =
        infoOf<VkCommandBufferInheritanceInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_INHERITANCE_INFO);
    begin.pInheritanceInfo = &inherited;
    check(vkBeginCommandBuffer(mSecondary, &begin), "vkBeginCommandBuffer");
    recordDynamic(mSecondary, 0);
    check(vkEndCommandBuffer(mSecondary), "vkEndCommandBuffer");
    vkCmdExecuteCommands(commands, 1, &mSecondary);
    wait(commands);
    check(vkEndCommandBuffer(commands), "vkEndCommandBuffer");
}

void Passes::submit(VkQueue queue) {
    recordAll();
    std::array<VkCommandBufferSubmitInfo, 2> commands{};
    for (std::size_t i = 0; i < commands.size(); ++i) {
        commands[i] = infoOf<VkCommandBufferSubmitInfo>(VK_STRUCTURE_TYPE_COMMAND_BUFFER_SUBMIT_INFO);
        commands[i].commandBuffer = mCommands[i];
    }
    auto info = infoOf<VkSubmitInfo2>(VK_STRUCTURE_TYPE_SUBMIT_INFO_2);
    info.commandBufferInfoCount = 2;
    info.pCommandBufferInfos = commands.data();
    check(vkQueueSubmit2(queue, 1, &info, VK_NULL_HANDLE), "vkQueueSubmit2");
}

void Passes::destroy() {
    vkDestroyFramebuffer(mDevice, mFramebuffer, nullptr);
    vkDestroyRenderPass(mDevice, mPass, nullptr);
    vkDestroyImageView(mDevice, mView, nullptr);
    vkDestroyImage(mDevice, mImage, nullptr);
    vkFreeMemory(mDevice, mMemory, nullptr);
}

}  // namespace client
