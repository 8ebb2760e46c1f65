#pragma once

#include "drawlist/DrawList.h"
#include "vulkan/draw/Memory.h"
#include "vulkan/draw/SubmissionRing.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vulkan {

/// The vertices of drawings, each in a buffer that is written when the drawing is new and once more when the
/// GPU has done all submissions that read it. A buffer begins with how each part is to be drawn.
class VertexBuffers {
public:
    explicit VertexBuffers(const Gpu& gpu) : mGpu(gpu) {}

    /// Where the vertices begin, and before them a VkDrawIndirectCommand for each part, in their order.
    static constexpr VkDeviceSize FIRST_VERTEX = 64;

    /// Makes a buffer the current one that has the list's drawing; the next submission reads it. Throws
    /// Failure.
    void prepare(const drawlist::DrawList& list, SubmissionRing& ring);

    /// `submission` reads the current buffer.
    void onUsed(std::uint64_t submission) { mCurrent->lastUse = submission; }

    /// After prepare().
    VkBuffer handle() const { return mCurrent->memory.handle(); }

    /// The current buffer's; no other one has, or had, that number. From 1.
    std::uint64_t number() const { return mCurrent->number; }

private:
    struct Buffer {
        explicit Buffer(const Gpu& gpu)
            : memory(gpu, VK_BUFFER_USAGE_VERTEX_BUFFER_BIT | VK_BUFFER_USAGE_INDIRECT_BUFFER_BIT) {}
        MappedBuffer memory;
        std::uint64_t number = 0;
        std::uint64_t lastUse = 0;  ///< a submission
    };

    Buffer& findFree(SubmissionRing& ring);

    const Gpu& mGpu;
    std::vector<std::unique_ptr<Buffer>> mBuffers;
    Buffer* mCurrent = nullptr;
    std::uint64_t mNumbers = 0;
    unsigned int mDrawing = 0;
};

}  // namespace vulkan
