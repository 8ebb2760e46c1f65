#include "vulkan/draw/Pipelines.h"

#include "drawlist/Batch.h"
#include "vulkan/shaders/overlay.frag.h"
#include "vulkan/shaders/overlay.vert.h"

#include <array>
#include <cstddef>

namespace vulkan {

namespace {

template <std::size_t WORDS>
VkShaderModule createModule(const Gpu& gpu, const std::uint32_t (&code)[WORDS]) {
    auto info = infoOf<VkShaderModuleCreateInfo>(VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO);
    info.codeSize = sizeof(code);
    info.pCode = code;
    VkShaderModule module = VK_NULL_HANDLE;
    check(gpu.vk.CreateShaderModule(gpu.device, &info, nullptr, &module), "vkCreateShaderModule");
    return module;
}

constexpr VkVertexInputBindingDescription BINDING = {0, sizeof(drawlist::Vertex),
                                                     VK_VERTEX_INPUT_RATE_VERTEX};
constexpr std::array<VkVertexInputAttributeDescription, 3> ATTRIBUTES = {
    {{0, 0, VK_FORMAT_R32G32_SFLOAT, offsetof(drawlist::Vertex, x)},
     {1, 0, VK_FORMAT_R16G16_UINT, offsetof(drawlist::Vertex, u)},
     {2, 0, VK_FORMAT_R8G8B8A8_UNORM, offsetof(drawlist::Vertex, color)}}};

}  // namespace

Pipelines::~Pipelines() {
    const DeviceFunctions& vk = mGpu.vk;
    for (const Entry& entry : mEntries) {
        vk.DestroyPipeline(mGpu.device, entry.made.pipeline, nullptr);
        vk.DestroyRenderPass(mGpu.device, entry.made.renderPass, nullptr);
    }
    vk.DestroyShaderModule(mGpu.device, mFragmentShader, nullptr);
    vk.DestroyShaderModule(mGpu.device, mVertexShader, nullptr);
    vk.DestroyPipelineLayout(mGpu.device, mLayout, nullptr);
    vk.DestroyDescriptorSetLayout(mGpu.device, mSetLayout, nullptr);
    vk.DestroySampler(mGpu.device, mLinear, nullptr);
    vk.DestroySampler(mGpu.device, mNearest, nullptr);
}

Pipeline Pipelines::find(VkFormat format, ColorEncoding encoding) {
    createLayout();
    for (const Entry& entry : mEntries) {
        if (entry.format == format && entry.encoding == encoding && entry.made.pipeline != VK_NULL_HANDLE) {
            return entry.made;
        }
    }
    // Kept at once, so that a failure loses nothing that was made.
    mEntries.push_back({format, encoding, {}});
    Pipeline& made = mEntries.back().made;
    made.renderPass = createRenderPass(format);
    made.pipeline = createPipeline(made.renderPass, encoding);
    return made;
}

/// What is there already stays: an earlier attempt may have failed half-way.
void Pipelines::createLayout() {
    if (mFragmentShader != VK_NULL_HANDLE) {
        return;
    }
    mNearest = mNearest != VK_NULL_HANDLE ? mNearest : createSampler(VK_FILTER_NEAREST);
    mLinear = mLinear != VK_NULL_HANDLE ? mLinear : createSampler(VK_FILTER_LINEAR);
    if (mSetLayout == VK_NULL_HANDLE) {
        const std::array<VkDescriptorSetLayoutBinding, 2> bindings = {
            {{0, VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER, 1, VK_SHADER_STAGE_FRAGMENT_BIT, &mNearest},
             {1, VK_DESCRIPTOR_TYPE_COMBINED_IMAGE_SAMPLER, 1, VK_SHADER_STAGE_FRAGMENT_BIT, &mLinear}}};
        auto info =
            infoOf<VkDescriptorSetLayoutCreateInfo>(VK_STRUCTURE_TYPE_DESCRIPTOR_SET_LAYOUT_CREATE_INFO);
        info.bindingCount = bindings.size();
        info.pBindings = bindings.data();
        check(mGpu.vk.CreateDescriptorSetLayout(mGpu.device, &info, nullptr, &mSetLayout),
              "vkCreateDescriptorSetLayout");
    }
    if (mLayout == VK_NULL_HANDLE) {
        const VkPushConstantRange places = {VK_SHADER_STAGE_VERTEX_BIT | VK_SHADER_STAGE_FRAGMENT_BIT, 0,
                                            sizeof(Places)};
        auto info = infoOf<VkPipelineLayoutCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO);
        info.setLayoutCount = 1;
        info.pSetLayouts = &mSetLayout;
        info.pushConstantRangeCount = 1;
        info.pPushConstantRanges = &places;
        check(mGpu.vk.CreatePipelineLayout(mGpu.device, &info, nullptr, &mLayout), "vkCreatePipelineLayout");
    }
    if (mVertexShader == VK_NULL_HANDLE) {
        mVertexShader = createModule(mGpu, overlay_vert);
    }
    mFragmentShader = createModule(mGpu, overlay_frag);
}

VkSampler Pipelines::createSampler(VkFilter filter) {
    auto info = infoOf<VkSamplerCreateInfo>(VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO);
    info.magFilter = filter;
    info.minFilter = filter;
    info.addressModeU = VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
    info.addressModeV = VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
    info.addressModeW = VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
    VkSampler sampler = VK_NULL_HANDLE;
    check(mGpu.vk.CreateSampler(mGpu.device, &info, nullptr, &sampler), "vkCreateSampler");
    return sampler;
}

VkRenderPass Pipelines::createRenderPass(VkFormat format) {
    VkAttachmentDescription attachment = {};
    attachment.format = format;
    attachment.samples = VK_SAMPLE_COUNT_1_BIT;
    attachment.loadOp = VK_ATTACHMENT_LOAD_OP_LOAD;
    attachment.storeOp = VK_ATTACHMENT_STORE_OP_STORE;
    attachment.stencilLoadOp = VK_ATTACHMENT_LOAD_OP_DONT_CARE;
    attachment.stencilStoreOp = VK_ATTACHMENT_STORE_OP_DONT_CARE;
    attachment.initialLayout = VK_IMAGE_LAYOUT_PRESENT_SRC_KHR;
    attachment.finalLayout = VK_IMAGE_LAYOUT_PRESENT_SRC_KHR;
    const VkAttachmentReference reference = {0, VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL};
    VkSubpassDescription subpass = {};
    subpass.pipelineBindPoint = VK_PIPELINE_BIND_POINT_GRAPHICS;
    subpass.colorAttachmentCount = 1;
    subpass.pColorAttachments = &reference;
    // What comes before has waited for the application's semaphores in this stage. The load is a read.
    constexpr VkPipelineStageFlags OUTPUT = VK_PIPELINE_STAGE_COLOR_ATTACHMENT_OUTPUT_BIT;
    constexpr VkAccessFlags BOTH = VK_ACCESS_COLOR_ATTACHMENT_READ_BIT | VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT;
    const std::array<VkSubpassDependency, 2> dependencies = {
        {{VK_SUBPASS_EXTERNAL, 0, OUTPUT, OUTPUT, VK_ACCESS_COLOR_ATTACHMENT_WRITE_BIT, BOTH, 0},
         {0, VK_SUBPASS_EXTERNAL, OUTPUT, OUTPUT, BOTH, BOTH, 0}}};
    auto info = infoOf<VkRenderPassCreateInfo>(VK_STRUCTURE_TYPE_RENDER_PASS_CREATE_INFO);
    info.attachmentCount = 1;
    info.pAttachments = &attachment;
    info.subpassCount = 1;
    info.pSubpasses = &subpass;
    info.dependencyCount = dependencies.size();
    info.pDependencies = dependencies.data();
    VkRenderPass renderPass = VK_NULL_HANDLE;
    check(mGpu.vk.CreateRenderPass(mGpu.device, &info, nullptr, &renderPass), "vkCreateRenderPass");
    return renderPass;
}

VkPipeline Pipelines::createPipeline(VkRenderPass renderPass, ColorEncoding encoding) {
    const VkSpecializationMapEntry entry = {0, 0, sizeof(encoding)};
    const VkSpecializationInfo constants = {1, &entry, sizeof(encoding), &encoding};
    std::array<VkPipelineShaderStageCreateInfo, 2> stages = {};
    stages[0].sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
    stages[0].stage = VK_SHADER_STAGE_VERTEX_BIT;
    stages[0].module = mVertexShader;
    stages[0].pName = "main";
    stages[1] = stages[0];
    stages[1].stage = VK_SHADER_STAGE_FRAGMENT_BIT;
    stages[1].module = mFragmentShader;
    stages[1].pSpecializationInfo = &constants;

    auto vertices = infoOf<VkPipelineVertexInputStateCreateInfo>(
        VK_STRUCTURE_TYPE_PIPELINE_VERTEX_INPUT_STATE_CREATE_INFO);
    vertices.vertexBindingDescriptionCount = 1;
    vertices.pVertexBindingDescriptions = &BINDING;
    vertices.vertexAttributeDescriptionCount = ATTRIBUTES.size();
    vertices.pVertexAttributeDescriptions = ATTRIBUTES.data();
    auto assembly = infoOf<VkPipelineInputAssemblyStateCreateInfo>(
        VK_STRUCTURE_TYPE_PIPELINE_INPUT_ASSEMBLY_STATE_CREATE_INFO);
    assembly.topology = VK_PRIMITIVE_TOPOLOGY_TRIANGLE_LIST;
    auto viewport =
        infoOf<VkPipelineViewportStateCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO);
    viewport.viewportCount = 1;
    viewport.scissorCount = 1;
    auto raster = infoOf<VkPipelineRasterizationStateCreateInfo>(
        VK_STRUCTURE_TYPE_PIPELINE_RASTERIZATION_STATE_CREATE_INFO);
    raster.polygonMode = VK_POLYGON_MODE_FILL;
    raster.cullMode = VK_CULL_MODE_NONE;
    raster.lineWidth = 1.0F;
    auto samples = infoOf<VkPipelineMultisampleStateCreateInfo>(
        VK_STRUCTURE_TYPE_PIPELINE_MULTISAMPLE_STATE_CREATE_INFO);
    samples.rasterizationSamples = VK_SAMPLE_COUNT_1_BIT;
    VkPipelineColorBlendAttachmentState blend = {};
    blend.blendEnable = VK_TRUE;
    blend.srcColorBlendFactor = VK_BLEND_FACTOR_SRC_ALPHA;
    blend.dstColorBlendFactor = VK_BLEND_FACTOR_ONE_MINUS_SRC_ALPHA;
    blend.srcAlphaBlendFactor = VK_BLEND_FACTOR_ONE;
    blend.dstAlphaBlendFactor = VK_BLEND_FACTOR_ONE_MINUS_SRC_ALPHA;
    blend.colorWriteMask = VK_COLOR_COMPONENT_R_BIT | VK_COLOR_COMPONENT_G_BIT | VK_COLOR_COMPONENT_B_BIT |
                           VK_COLOR_COMPONENT_A_BIT;
    auto blending =
        infoOf<VkPipelineColorBlendStateCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_COLOR_BLEND_STATE_CREATE_INFO);
    blending.attachmentCount = 1;
    blending.pAttachments = &blend;
    constexpr std::array<VkDynamicState, 2> CHANGING = {VK_DYNAMIC_STATE_VIEWPORT, VK_DYNAMIC_STATE_SCISSOR};
    auto dynamic =
        infoOf<VkPipelineDynamicStateCreateInfo>(VK_STRUCTURE_TYPE_PIPELINE_DYNAMIC_STATE_CREATE_INFO);
    dynamic.dynamicStateCount = CHANGING.size();
    dynamic.pDynamicStates = CHANGING.data();

    auto info = infoOf<VkGraphicsPipelineCreateInfo>(VK_STRUCTURE_TYPE_GRAPHICS_PIPELINE_CREATE_INFO);
    info.stageCount = stages.size();
    info.pStages = stages.data();
    info.pVertexInputState = &vertices;
    info.pInputAssemblyState = &assembly;
    info.pViewportState = &viewport;
    info.pRasterizationState = &raster;
    info.pMultisampleState = &samples;
    info.pColorBlendState = &blending;
    info.pDynamicState = &dynamic;
    info.layout = mLayout;
    info.renderPass = renderPass;
    VkPipeline pipeline = VK_NULL_HANDLE;
    check(mGpu.vk.CreateGraphicsPipelines(mGpu.device, VK_NULL_HANDLE, 1, &info, nullptr, &pipeline),
          "vkCreateGraphicsPipelines");
    return pipeline;
}

}  // namespace vulkan
