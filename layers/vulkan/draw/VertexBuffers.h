#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "drawlist/DrawList.h"
#include "vulkan/draw/Memory.h"
#include "vulkan/draw/SubmissionRing.h"

namespace vulkan {

/// The vertices of drawings, each in a buffer that is written when the drawing is new and once more when the
/// GPU has done all submissions that read it.
class VertexBuffers {
public:
    explicit VertexBuffers(const Gpu& gpu) : mGpu(gpu) {}

    /// The buffer with the list's drawing, for the submission that has begun. Throws Failure.
    VkBuffer use(const drawlist::DrawList& list, SubmissionRing& ring);

private:
    struct Buffer {
        explicit Buffer(const Gpu& gpu) : memory(gpu, VK_BUFFER_USAGE_VERTEX_BUFFER_BIT) {}
        MappedBuffer memory;
        std::uint64_t lastUse = 0;  ///< a submission
    };

    Buffer& findFree(SubmissionRing& ring);

    const Gpu& mGpu;
    std::vector<std::unique_ptr<Buffer>> mBuffers;
    Buffer* mCurrent = nullptr;
    unsigned int mDrawing = 0;
};

}  // namespace vulkan
