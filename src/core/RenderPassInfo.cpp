#include "core/RenderPassInfo.h"

#include <cstddef>

namespace core {

void RenderPassInfo::reset() {
    mRenderPassCount = 0;
    mDrawCallCounts.clear();
    mPayloadCounts.clear();
}

int RenderPassInfo::getRenderPassCount() const {
    return mRenderPassCount;
}

void RenderPassInfo::setRenderPassCount(int count) {
    mRenderPassCount = count;
}

void RenderPassInfo::addRenderPassInfo(unsigned int drawCalls, unsigned int payload) {
    ++mRenderPassCount;
    mDrawCallCounts.push_back(drawCalls);
    mPayloadCounts.push_back(payload);
}

int RenderPassInfo::getDrawCallCount(int index) const {
    return static_cast<int>(mDrawCallCounts[static_cast<std::size_t>(index)]);
}

int RenderPassInfo::getPayloadCount(int index) const {
    return static_cast<int>(mPayloadCounts[static_cast<std::size_t>(index)]);
}

}  // namespace core
