#include "gui/FrameData.h"

namespace gui {

FrameData::FrameData(unsigned int frameId, const std::vector<RenderPassData>& renderPasses)
    : mFrameId(frameId), mRenderPasses(renderPasses) {}

void FrameData::addRenderPassInfo(const RenderPassData& renderPass) {
    mRenderPasses.push_back(renderPass);
}

void FrameData::addFrameTimeInfo(long double start, long double end) {
    mStartTime = start;
    mEndTime = end;
}

bool FrameData::isValid() const {
    return mEndTime - mStartTime > 0 && !mRenderPasses.empty();
}

}  // namespace gui
