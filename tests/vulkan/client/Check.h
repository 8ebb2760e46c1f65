#pragma once

#include <vulkan/vulkan.h>

#include <cstdlib>
#include <iostream>

namespace client {

inline void check(VkResult result, const char* what) {
    if (result != VK_SUCCESS && result != VK_SUBOPTIMAL_KHR) {
        std::cerr << what << " failed: " << result << '\n';
        std::exit(1);  // NOLINT(concurrency-mt-unsafe): one thread
    }
}

template <typename Info>
Info infoOf(VkStructureType type) {
    Info info = {};
    info.sType = type;
    return info;
}

}  // namespace client
