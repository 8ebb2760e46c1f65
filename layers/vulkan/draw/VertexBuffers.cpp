#include "vulkan/draw/VertexBuffers.h"

#include <array>
#include <cstring>

namespace vulkan {

namespace {

/// Buffers grow by multiples of this.
constexpr std::size_t BUFFER_STEP = 65536;

}  // namespace

void VertexBuffers::prepare(const drawlist::DrawList& list, SubmissionRing& ring) {
    // What comes right after the drawing that is in the buffer may be the same once more.
    const bool isNew = mCurrent == nullptr || (mDrawing != list.drawing &&
                                               (mDrawing + 1 != list.drawing || !list.batch.isRepeated()));
    if (isNew) {
        mCurrent = nullptr;
        Buffer& buffer = findFree(ring);
        const std::size_t size = FIRST_VERTEX + list.batch.vertexCount() * sizeof(drawlist::Vertex);
        if (size > buffer.memory.size()) {
            buffer.memory.reserve((size + BUFFER_STEP - 1) / BUFFER_STEP * BUFFER_STEP);
            buffer.number = ++mNumbers;
        }
        std::array<VkDrawIndirectCommand, drawlist::Batch::PARTS> commands = {};
        static_assert(sizeof(commands) <= FIRST_VERTEX);
        const auto draws = list.draws();
        for (std::size_t i = 0; i < draws.size(); ++i) {
            commands[i] = {static_cast<std::uint32_t>(draws[i].vertices.count), 1,
                           static_cast<std::uint32_t>(draws[i].vertices.first), 0};
        }
        std::memcpy(buffer.memory.bytes(), commands.data(), sizeof(commands));
        list.batch.copyVertices(reinterpret_cast<drawlist::Vertex*>(buffer.memory.bytes() + FIRST_VERTEX));
        mCurrent = &buffer;
    }
    mDrawing = list.drawing;
}

VertexBuffers::Buffer& VertexBuffers::findFree(SubmissionRing& ring) {
    for (const std::unique_ptr<Buffer>& each : mBuffers) {
        if (ring.isDone(each->lastUse)) {
            return *each;
        }
    }
    mBuffers.push_back(std::make_unique<Buffer>(mGpu));
    return *mBuffers.back();
}

}  // namespace vulkan
