// Calls that make something, one of which fails.

#include <atomic>
#include <cstring>
#include <iostream>

#include "Real.h"

namespace standin {

namespace {

std::atomic<bool> gIsCounting = false;
std::atomic<std::uint32_t> gCalls = 0;

bool isRefused(const char* name) {
    static const std::uint32_t refused = number("refuse");
    if (refused == 0 || !gIsCounting || ++gCalls != refused) {
        return false;
    }
    std::cout << "refused " << name << std::endl;
    return true;
}

template <int WHICH>
struct Call {
    static inline std::atomic<PFN_vkVoidFunction> real = nullptr;
    static inline std::atomic<const char*> name = nullptr;
};

template <int WHICH, typename... Arguments>
VKAPI_ATTR VkResult VKAPI_CALL make(Arguments... arguments) {
    using Function = VkResult (*)(Arguments...);
    return isRefused(Call<WHICH>::name) ? VK_ERROR_OUT_OF_DEVICE_MEMORY
                                        : reinterpret_cast<Function>(Call<WHICH>::real.load())(arguments...);
}

template <int WHICH, typename... Arguments>
PFN_vkVoidFunction refusing(const char* name, VkResult (*)(Arguments...)) {
    Call<WHICH>::name = name;
    Call<WHICH>::real = lookUp(name);
    return reinterpret_cast<PFN_vkVoidFunction>(make<WHICH, Arguments...>);
}

}  // namespace

void beginRefusing() {
    gIsCounting = true;
}

#define EACH(function)                                                                 \
    if (std::strcmp(name, #function) == 0) {                                           \
        return refusing<__COUNTER__>(#function, static_cast<PFN_##function>(nullptr)); \
    }

PFN_vkVoidFunction findRefusal(const char* name) {
    EACH(vkAllocateMemory)
    EACH(vkMapMemory)
    EACH(vkBindBufferMemory)
    EACH(vkBindImageMemory)
    EACH(vkCreateBuffer)
    EACH(vkCreateImage)
    EACH(vkCreateImageView)
    EACH(vkCreateSampler)
    EACH(vkCreateShaderModule)
    EACH(vkCreateRenderPass)
    EACH(vkCreateFramebuffer)
    EACH(vkCreateDescriptorSetLayout)
    EACH(vkCreateDescriptorPool)
    EACH(vkAllocateDescriptorSets)
    EACH(vkCreatePipelineLayout)
    EACH(vkCreateGraphicsPipelines)
    EACH(vkCreateQueryPool)
    EACH(vkCreateSemaphore)
    EACH(vkCreateFence)
    EACH(vkAllocateCommandBuffers)
    EACH(vkBeginCommandBuffer)
    EACH(vkEndCommandBuffer)
    EACH(vkResetFences)
    return nullptr;
}

}  // namespace standin
