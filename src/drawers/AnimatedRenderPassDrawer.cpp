#include "drawers/AnimatedRenderPassDrawer.h"

#include "utils/StringFormat.h"
#include "utils/Time.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

namespace drawer {

namespace {

// Clip-space units.
constexpr float LANDSCAPE_CHARACTER_WIDTH = 0.02F;
constexpr float PORTRAIT_CHARACTER_WIDTH = 0.04F;

/// A row that does not fit is made at least a quarter wider than the drawer: a shorter slide would only
/// twitch.
constexpr float SMALLEST_OVERHANG = 1.25F;

// Clip-space units per millisecond.
constexpr float LANDSCAPE_SPEED = 0.00025F;
constexpr float PORTRAIT_SPEED = 0.0005F;

/// How long a cycle is, as a multiple of the time that the row takes to slide to its end. The row slides for
/// 2 x 0.41 of the cycle.
constexpr float CYCLE_LENGTH = 2.5F;

// The progress of a cycle at which the row starts or stops.
constexpr float LEAVES_START = 0.06F;
constexpr float REACHES_END = 0.47F;
constexpr float LEAVES_END = 0.53F;
constexpr float REACHES_START = 0.94F;

/// -1 while the row slides left, 1 while it slides back, 0 in the pauses and for NaN.
float directionAt(float progress) {
    if (progress > LEAVES_START && progress < REACHES_END) {
        return -1.0F;
    }
    if (progress > LEAVES_END && progress < REACHES_START) {
        return 1.0F;
    }
    return 0.0F;
}

std::string cellText(const gui::RenderPassData& pass) {
    std::string values;
    for (const std::uint32_t value : pass.mValues) {
        if (!values.empty()) {
            values += ' ';
        }
        values += std::to_string(value);
    }
    return utils::strFormat(" %d %s ", static_cast<int>(pass.mIndex), values.c_str());
}

std::uint64_t valueOrZero(const gui::RenderPassData& pass, std::size_t index) {
    return index < pass.mValues.size() ? pass.mValues[index] : 0;
}

}  // namespace

AnimatedRenderPassDrawer::AnimatedRenderPassDrawer() = default;

AnimatedRenderPassDrawer::~AnimatedRenderPassDrawer() = default;

void AnimatedRenderPassDrawer::draw() {
    measureWidgets();
    animateMarquee();
    mTranslation = glm::vec3(mMarqueeOffset, 0.0F, 0.0F);
    onPreDrawWidgets();
    drawWidgets();
    onPostDrawWidgets();
}

void AnimatedRenderPassDrawer::dump(Ostra::FrameDump& frameDump) {
    if (mFrameData.mFrameId == mLastDumpedFrameId) {
        return;
    }
    mLastDumpedFrameId = mFrameData.mFrameId;
    frameDump.renderPassFrameId = static_cast<std::int32_t>(mFrameData.mFrameId);
    frameDump.frameDuration = static_cast<float>(mFrameData.mEndTime - mFrameData.mStartTime);
    for (const gui::RenderPassData& pass : mFrameData.mRenderPasses) {
        frameDump.renderPasses.push_back({valueOrZero(pass, 0), valueOrZero(pass, 1),
                                          static_cast<double>(pass.mEndTime - pass.mStartTime)});
    }
}

void AnimatedRenderPassDrawer::addFrameInfo(const gui::FrameData& frameInfo) {
    mFrameData = frameInfo;
    resetAnimation();
}

void AnimatedRenderPassDrawer::prelayoutRenderPassText() {
    const auto count = static_cast<float>(mFrameData.mRenderPasses.size());
    const float characterWidth = mOrientation != 0 ? LANDSCAPE_CHARACTER_WIDTH : PORTRAIT_CHARACTER_WIDTH;
    const float width = 2.0F * mSize.x;

    // The longest text that does not fit at full character width decides the width.
    float smallestWidth = characterWidth;
    float longest = 0.0F;
    for (gui::RenderPassData& pass : mFrameData.mRenderPasses) {
        pass.mTexts.clear();
        if (pass.mValues.empty()) {
            continue;
        }
        pass.mTexts.push_back(cellText(pass));
        const auto length = static_cast<float>(pass.mTexts.back().size());
        const float fittingWidth = width / (count * length);
        if (fittingWidth < smallestWidth) {
            longest = length;
            smallestWidth = fittingWidth;
        }
    }

    const float naturalWidth = characterWidth * longest * count;
    mTextWidth = width;
    if (count > 0.0F && naturalWidth > width) {
        mTextWidth = naturalWidth / width < SMALLEST_OVERHANG ? SMALLEST_OVERHANG * width : naturalWidth;
    }
}

void AnimatedRenderPassDrawer::recalculateTextDrawers() {
    destroyTextblocks();
    const std::size_t count = mFrameData.mRenderPasses.size();
    if (count == 0) {
        return;
    }
    const float gap = blockGap();
    const float step = mTextWidth / (2.0F * static_cast<float>(count));
    mTextblocks.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::unique_ptr<TextblockDrawer> block = makeBlock();
        for (const std::string& text : mFrameData.mRenderPasses[i].mTexts) {
            block->addText(text);
        }
        block->mSize.x = step - gap;
        block->mPosition.x = mPosition.x + static_cast<float>(i) * step;
        block->setTextGravity(gui::TextGravity::CENTER);
        block->setBackgroundColor(mBackgroundColor);
        mTextblocks.push_back(std::move(block));
    }
    mTextblocks.back()->mSize.x += gap;
}

void AnimatedRenderPassDrawer::resetAnimation() {
    mIsAnimating = false;
    mMarqueeCyclesDone = 0;
    mElapsedMs = 0;
    mMarqueeOffset = 0.0F;
}

void AnimatedRenderPassDrawer::animateMarquee() {
    mIsAnimating = mMarqueeCyclesDone < mMarqueeCycles;
    if (mIsAnimating) {
        calculateCircularMarquee();
    }
}

void AnimatedRenderPassDrawer::calculateCircularMarquee() {
    const std::uint32_t now = utils::getUtcTime_msec();
    const std::uint32_t sinceLastTick = now - mLastTickMs;
    const float overhang = mTextWidth - 2.0F * mSize.x;
    const bool isOverhanging = overhang > 0.0F;
    const float speed = mOrientation != 0 ? LANDSCAPE_SPEED : PORTRAIT_SPEED;
    const float cycleMs = isOverhanging ? overhang * CYCLE_LENGTH / speed : mTextWidth / speed;

    if (mIsAnimating && isOverhanging) {
        const float direction = directionAt(static_cast<float>(mElapsedMs) / cycleMs);
        const float moved = mMarqueeOffset + speed * direction * static_cast<float>(sinceLastTick);
        mMarqueeOffset = std::min(std::max(-overhang, moved), 0.0F);
    } else {
        mMarqueeOffset = 0.0F;
    }

    mElapsedMs += sinceLastTick;
    mLastTickMs = now;

    if (!mIsAnimating) {
        mIsAnimating = true;
        mElapsedMs = 0;
    } else if (!(cycleMs > static_cast<float>(mElapsedMs))) {
        mIsAnimating = false;
        mMarqueeOffset = 0.0F;
        ++mMarqueeCyclesDone;
        mElapsedMs = 0;
    }
}

}  // namespace drawer
