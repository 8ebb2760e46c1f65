#pragma once

#include "vulkan/draw/ColorEncoding.h"
#include "vulkan/draw/Gpu.h"
#include "vulkan/draw/Placing.h"

#include <cstdint>
#include <vector>

namespace vulkan {

/// Values of a draw that the shaders read.
struct Places {
    glm::vec4 toClip;     ///< the axes of a Placing, from positions to clip space
    glm::vec4 toTexture;  ///< from uv to texture coordinates
    glm::vec2 clipOrigin;
    glm::vec2 textureOrigin;
    std::uint32_t isPicture;
};

/// What drawing into images of one format takes.
struct Pipeline {
    VkRenderPass renderPass = VK_NULL_HANDLE;  ///< keeps the picture, from and to the layout of a present
    VkPipeline pipeline = VK_NULL_HANDLE;
};

/// What the overlays of one device share, kept as long as the device. One thread at a time.
class Pipelines {
public:
    explicit Pipelines(const Gpu& gpu) : mGpu(gpu) {}
    ~Pipelines();
    Pipelines(const Pipelines&) = delete;
    Pipelines& operator=(const Pipelines&) = delete;

    /// Made when it is asked for first. Throws Failure.
    Pipeline find(VkFormat format, ColorEncoding encoding);

    /// After the first find().
    VkDescriptorSetLayout setLayout() const { return mSetLayout; }
    VkPipelineLayout layout() const { return mLayout; }

private:
    struct Entry {
        VkFormat format;
        ColorEncoding encoding;
        Pipeline made;
    };

    void createLayout();
    VkSampler createSampler(VkFilter filter);
    VkRenderPass createRenderPass(VkFormat format);
    VkPipeline createPipeline(VkRenderPass renderPass, ColorEncoding encoding);

    const Gpu& mGpu;
    VkSampler mNearest = VK_NULL_HANDLE;
    VkSampler mLinear = VK_NULL_HANDLE;
    VkDescriptorSetLayout mSetLayout = VK_NULL_HANDLE;
    VkPipelineLayout mLayout = VK_NULL_HANDLE;
    VkShaderModule mVertexShader = VK_NULL_HANDLE;
    VkShaderModule mFragmentShader = VK_NULL_HANDLE;
    std::vector<Entry> mEntries;
};

}  // namespace vulkan
