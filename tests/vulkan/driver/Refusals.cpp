// Calls that make something: they are counted, and one of them fails.

#include "Real.h"

#include <atomic>
#include <cstring>
#include <iostream>

namespace standin {

namespace {

std::atomic<bool> gIsCounting = false;
std::atomic<std::uint32_t> gCalls = 0;

/// Presents after which nothing should be made any more. Semaphores the client makes for each frame.
constexpr std::uint32_t WARM = 60;
std::atomic<std::uint32_t> gMade = 0;  ///< since then

bool isRefused(const char* name) {
    const std::string text(name);
    const bool isMade = text.compare(0, 8, "vkCreate") == 0 || text.compare(0, 10, "vkAllocate") == 0;
    gMade += isMade && text != "vkCreateSemaphore" && presents() > WARM ? 1 : 0;
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

std::uint32_t made() {
    return gMade;
}

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
