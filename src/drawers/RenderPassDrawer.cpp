#include "drawers/RenderPassDrawer.h"

namespace drawer {

RenderPassDrawer::RenderPassDrawer() = default;

RenderPassDrawer::~RenderPassDrawer() {
    mFrameData.mRenderPasses.clear();
    destroyTextblocks();
}

void RenderPassDrawer::measureWidgets() {
    mOrientation = getOrientation();
    prelayoutRenderPassText();
    recalculateTextDrawers();
}

void RenderPassDrawer::drawWidgets() {
    for (const std::unique_ptr<TextblockDrawer>& block : mTextblocks) {
        block->setTextColor(mTextColor);
        block->mTranslation = mTranslation;
        block->draw();
    }
}

void RenderPassDrawer::drawText() {
    drawWidgets();
}

void RenderPassDrawer::destroyTextblocks() {
    while (!mTextblocks.empty()) {
        mTextblocks.pop_back();
    }
}

std::unique_ptr<TextblockDrawer> RenderPassDrawer::makeBlock() {
    constexpr unsigned int LINES = 1;
    constexpr unsigned int TEXT_HEIGHT = 35;
    std::unique_ptr<TextblockDrawer> block = createTextblockDrawer(LINES, TEXT_HEIGHT);
    block->mSize.y = mSize.y;
    block->mPosition.y = mPosition.y;
    return block;
}

float RenderPassDrawer::blockGap() const {
    const float gap = mSize.x / 100.0F;
    return mOrientation == 1 ? gap / 2.0F : gap;
}

}  // namespace drawer
