#pragma once

#include "vulkan/draw/Placing.h"

#include <cstdint>

namespace vulkan {

/// What a command buffer draws, as far as it may change from frame to frame: where two are equal, one can be
/// submitted in the other's place. How many vertices there are is read by the GPU when it draws.
struct Recording {
    std::uint32_t image = 0;     ///< of the swapchain
    std::uint64_t vertices = 0;  ///< the buffer's number; 0 for nothing to draw
    bool isAfterAll = false;     ///< no semaphore stands before it
    bool hasPicture = false;     ///< of the application, in the thumbnail
    Placing pictureToTexture;    ///< of that

    bool operator==(const Recording& other) const {
        return image == other.image && vertices == other.vertices && isAfterAll == other.isAfterAll &&
               hasPicture == other.hasPicture && pictureToTexture == other.pictureToTexture;
    }
};

}  // namespace vulkan
