#include "drawers/FixedRenderPassDrawer.h"

#include "utils/Log.h"
#include "utils/StringFormat.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace drawer {

namespace {

/// Shorter passes become bars of this length: a fraction of the frame, like all lengths here.
constexpr float THIN = 0.01F;

constexpr float THIN_BRIGHTENING = 0.2F;

/// NaN times come last: a sort needs a place for every pass.
bool startsEarlier(const gui::RenderPassData& left, const gui::RenderPassData& right) {
    if (std::isnan(left.mStartTime) || std::isnan(right.mStartTime)) {
        return std::isnan(right.mStartTime) && !std::isnan(left.mStartTime);
    }
    return left.mStartTime < right.mStartTime;
}

/// Returns `length` as a share of the frame, clamped to 0..1; 0 for NaN.
float shareOf(long double length, long double frameLength) {
    const double share = static_cast<double>(length) / static_cast<double>(frameLength);
    return share > 0.0 ? static_cast<float>(std::min(share, 1.0)) : 0.0F;
}

/// A part of the time line.
struct Span {
    float start;
    float length;
};

/// Places the pass on the time line, at least a gap after the previous block unless it starts the frame.
Span placePass(const gui::FrameData& frame, const gui::RenderPassData& pass, float previousEnd, float gap) {
    const long double frameLength = frame.mEndTime - frame.mStartTime;
    Span span{shareOf(pass.mStartTime - frame.mStartTime, frameLength),
              shareOf(pass.mEndTime - pass.mStartTime, frameLength)};
    if (span.start > 0.0F && span.start < previousEnd + gap) {
        span.length = std::max(span.start + span.length - previousEnd - gap, 0.0F);
        span.start = previousEnd + gap;
    }
    return span;
}

/// Returns the bar for a pass that is too short for a label, around the pass's middle.
Span thinBar(const Span& span) {
    const float start = std::max(span.start - THIN / 2.0F - span.length / 2.0F, 0.0F);
    return {start, std::min(1.0F - start, THIN)};
}

glm::vec4 thinColor(const glm::vec4& color) {
    return {color.r, std::min(color.g + THIN_BRIGHTENING, 1.0F), color.b, 1.0F};
}

}  // namespace

FixedRenderPassDrawer::FixedRenderPassDrawer() = default;

FixedRenderPassDrawer::~FixedRenderPassDrawer() = default;

void FixedRenderPassDrawer::draw() {
    if (!mFrameData.isValid()) {
        return;
    }
    measureWidgets();
    drawWidgets();
}

void FixedRenderPassDrawer::addFrameInfo(const gui::FrameData& frameInfo) {
    if (!frameInfo.isValid()) {
        KORDANIX_LOG_ERROR("Frame data is invalid!", KORDANIX_LOG_HERE);
        return;
    }
    mFrameData = frameInfo;
    std::sort(mFrameData.mRenderPasses.begin(), mFrameData.mRenderPasses.end(), startsEarlier);
}

void FixedRenderPassDrawer::prelayoutRenderPassText() {
    for (gui::RenderPassData& pass : mFrameData.mRenderPasses) {
        pass.mTexts.assign(1, utils::toString(pass.mIndex));
    }
}

void FixedRenderPassDrawer::recalculateTextDrawers() {
    destroyTextblocks();
    mTextblocks.reserve(mFrameData.mRenderPasses.size());
    const float gap = blockGap();
    const float rightEdge = mPosition.x + mSize.x;
    float previousEnd = 0.0F;
    for (const gui::RenderPassData& pass : mFrameData.mRenderPasses) {
        Span span = placePass(mFrameData, pass, previousEnd, gap);
        std::unique_ptr<TextblockDrawer> block = makeBlock();
        if (span.length < THIN) {
            span = thinBar(span);
            block->setBackgroundColor(thinColor(mBackgroundColor));
        } else {
            block->setTextGravity(gui::TextGravity::CENTER);
            for (const std::string& text : pass.mTexts) {
                block->addText(text);
            }
            block->setBackgroundColor(mBackgroundColor);
        }
        // A block pushed past the frame's end has no width and sits on the right edge.
        block->mPosition.x = std::min(mPosition.x + span.start * mSize.x, rightEdge);
        block->mSize.x = std::max(std::min(span.length * mSize.x, rightEdge - block->mPosition.x), 0.0F);
        mTextblocks.push_back(std::move(block));
        previousEnd = span.start + span.length;
    }
}

}  // namespace drawer
