#include "vulkan/draw/VertexBuffers.h"

namespace vulkan {

namespace {

/// Buffers grow by multiples of this.
constexpr std::size_t BUFFER_STEP = 65536;

}  // namespace

VkBuffer VertexBuffers::use(const drawlist::DrawList& list, SubmissionRing& ring) {
    // What comes right after the drawing that is in the buffer may be the same once more.
    const bool isNew = mCurrent == nullptr || (mDrawing != list.drawing &&
                                               (mDrawing + 1 != list.drawing || !list.batch.isRepeated()));
    if (isNew) {
        mCurrent = nullptr;
        Buffer& buffer = findFree(ring);
        const std::size_t size = list.batch.vertexCount() * sizeof(drawlist::Vertex);
        buffer.memory.reserve((size + BUFFER_STEP - 1) / BUFFER_STEP * BUFFER_STEP);
        list.batch.copyVertices(reinterpret_cast<drawlist::Vertex*>(buffer.memory.bytes()));
        mCurrent = &buffer;
    }
    mDrawing = list.drawing;
    mCurrent->lastUse = ring.current();
    return mCurrent->memory.handle();
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
