#include "scene/RenderPassRows.h"

#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "drawers/TextblockDrawer.h"
#include "gui/LayoutManager.h"
#include "scene/Canvas.h"
#include "scene/Style.h"

#include <algorithm>
#include <limits>

namespace scene {

namespace {

/// The factory for the plain function through which a text block creates its lines.
thread_local PrimitiveFactory* currentFactory = nullptr;

std::unique_ptr<drawer::TextDrawer> createLine() {
    return currentFactory->createText();
}

/// Asks the layout manager, so that the rows always match the current render areas.
unsigned int layoutOrientation() {
    return gui::LayoutManager::getInstance()->mIsPortrait ? 0 : 1;
}

}  // namespace

std::unique_ptr<drawer::TextblockDrawer> createTextblock(PrimitiveFactory& factory, unsigned int lineCount,
                                                         unsigned int textSizeHint) {
    currentFactory = &factory;
    auto block =
        std::make_unique<drawer::TextblockDrawer>(createLine, factory.createRect(), lineCount, textSizeHint);
    currentFactory = nullptr;
    return block;
}

PassCellsRow::PassCellsRow(PrimitiveFactory& factory) : mFactory(factory) {
    mMarqueeCycles = std::numeric_limits<decltype(mMarqueeCycles)>::max();
    mTextColor = plainTextColor();
    mBackgroundColor = renderPassColor();
}

std::unique_ptr<drawer::TextblockDrawer> PassCellsRow::createTextblockDrawer(unsigned int lineCount,
                                                                             unsigned int textSizeHint) {
    return createTextblock(mFactory, lineCount, textSizeHint);
}

unsigned int PassCellsRow::getOrientation() {
    return layoutOrientation();
}

void PassCellsRow::onPreDrawWidgets() {
    mFactory.setClip(mPosition, mSize);
}

void PassCellsRow::onPostDrawWidgets() {
    mFactory.clearClip();
}

PassTimeline::PassTimeline(PrimitiveFactory& factory) : mFactory(factory) {
    mTextColor = plainTextColor();
    mBackgroundColor = renderPassColor();
}

std::unique_ptr<drawer::TextblockDrawer> PassTimeline::createTextblockDrawer(unsigned int lineCount,
                                                                             unsigned int textSizeHint) {
    return createTextblock(mFactory, lineCount, textSizeHint);
}

unsigned int PassTimeline::getOrientation() {
    return layoutOrientation();
}

PassCaption::PassCaption(PrimitiveFactory& factory)
    : drawer::RenderPassInfoDrawer(factory.createText(), factory.createText(), factory.createText(),
                                   factory.createRect()) {
    mFrameText->setTextColor(plainTextColor());
    mBackground->mColor = noColor();
}

unsigned int PassCaption::getOrientation() {
    return layoutOrientation();
}

void PassCaption::fitTexts(const Canvas& canvas) {
    constexpr float TEXT_GAP = 1.0F;  // in units of a line, which is 2 high
    const float width = lineWidth(mFrameText->mText) + TEXT_GAP + lineWidth(mVertexLegend->mText);
    const glm::vec4 area = getTextDrawnArea();
    const float widest = 2.0F * area.z * canvas.pixels.x / width;
    const bool isFit = area.w * canvas.pixels.y <= widest;
    for (drawer::TextDrawer* text : {mFrameText.get(), mVertexLegend.get(), mFragmentLegend.get()}) {
        text->setTextSizeHint(isFit ? 0 : std::max(static_cast<unsigned int>(widest), 1U));
    }
}

}  // namespace scene
