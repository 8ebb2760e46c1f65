#include "drawers/RenderPassInfoDrawer.h"

#include "utils/StringFormat.h"

#include <utility>

namespace drawer {

namespace {

// Canvas fractions: 6 units of a row that leaves 6 units free at either end of the canvas.
constexpr float LANDSCAPE_MARGIN = 6.0F / 728.0F;
constexpr float PORTRAIT_MARGIN = 6.0F / 348.0F;

}  // namespace

RenderPassInfoDrawer::RenderPassInfoDrawer(std::unique_ptr<TextDrawer> frameText,
                                           std::unique_ptr<TextDrawer> vertexLegend,
                                           std::unique_ptr<TextDrawer> fragmentLegend,
                                           std::unique_ptr<RectDrawer> background)
    : mFrameText(std::move(frameText)),
      mVertexLegend(std::move(vertexLegend)),
      mFragmentLegend(std::move(fragmentLegend)),
      mBackground(std::move(background)) {
    mVertexLegend->setText("@Vertex @Fragment");
    mVertexLegend->setTextGravity(gui::TextGravity::RIGHT);
    mFragmentLegend->setText("@Fragment");
    mFragmentLegend->setTextGravity(gui::TextGravity::RIGHT);
}

RenderPassInfoDrawer::~RenderPassInfoDrawer() = default;

void RenderPassInfoDrawer::draw() {
    drawBackground();
    drawText();
}

void RenderPassInfoDrawer::setFrameIdAndDuration(unsigned int frameId, long double duration) {
    mFrameText->setText(utils::strFormat("%zu(%.1fms)", static_cast<std::size_t>(frameId),
                                         static_cast<double>(static_cast<float>(duration))));
}

void RenderPassInfoDrawer::drawBackground() {
    mBackground->mSize = mSize;
    mBackground->mPosition = mPosition;
    mBackground->mTranslation = mTranslation;
    mBackground->draw();
}

void RenderPassInfoDrawer::drawText() {
    const glm::vec4 area = getTextDrawnArea();
    TextDrawer* const texts[] = {mFrameText.get(), mVertexLegend.get(), mFragmentLegend.get()};
    for (TextDrawer* const text : texts) {
        text->mPosition = glm::vec2(area.x, area.y);
        text->mSize = glm::vec2(area.z, area.w);
    }
    for (TextDrawer* const text : texts) {
        text->draw();
    }
}

glm::vec4 RenderPassInfoDrawer::getTextDrawnArea() {
    const float margin = getOrientation() != 0 ? LANDSCAPE_MARGIN : PORTRAIT_MARGIN;
    return {mPosition.x + margin, mPosition.y, mSize.x - 2.0F * margin, mSize.y};
}

}  // namespace drawer
