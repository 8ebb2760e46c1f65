#include "scene/ThumbnailWidget.h"

#include "core/StateInfo.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextblockDrawer.h"
#include "scene/Canvas.h"
#include "scene/RenderPassRows.h"
#include "scene/Style.h"
#include "utils/StringFormat.h"

#include <glm/common.hpp>

namespace scene {

namespace {

using Area = gui::RenderAreaType;

constexpr unsigned int LABEL_LINES = 2;

/// Canvas units.
constexpr float FRAME_WIDTH = 1.0F;

}  // namespace

ThumbnailWidget::ThumbnailWidget(PrimitiveFactory& factory)
    : WidgetView(gui::WidgetType::GPU_ACTIVITY_THUMBNAIL),
      mFactory(factory),
      mPicture(&place(factory.createThumbnail(), Area::GPU_ACTIVITY_THUMBNAIL_WHOLE)),
      mLabel(&place(createTextblock(factory, LABEL_LINES, 0), Area::GPU_ACTIVITY_THUMBNAIL_LABEL)) {
    mLabel->setTextGravity(gui::TextGravity::CENTER);
    for (drawer::RectDrawer*& side : mFrame) {
        side = &place(factory.createRect(), Area::GPU_ACTIVITY_THUMBNAIL_WHOLE);
    }
}

void ThumbnailWidget::applySettings(const Canvas& canvas) {
    const glm::vec2 width = FRAME_WIDTH / canvas.units;
    for (std::size_t i = 0; i < mFrame.size(); ++i) {
        drawer::RectDrawer& side = *mFrame[i];
        side.mColor = backgroundColor();
        const bool isUpright = i < 2;
        const glm::vec2 inner = side.mSize - 2.0F * width;
        const glm::vec2 last = side.mPosition + side.mSize - width;
        if (isUpright) {
            side.mPosition.y += width.y;
            side.mSize = {width.x, inner.y};
        } else {
            side.mSize.y = width.y;
        }
        if (i == 1) {
            side.mPosition.x = last.x;
        } else if (i == 3) {
            side.mPosition.y = last.y;
        }
    }
    inset(*mPicture, glm::vec2(FRAME_WIDTH), canvas);
    const glm::vec2 text = 0.5F * LINE_PIXELS * glm::vec2(lineWidth("8888x8888"), 2.0F * LABEL_LINES);
    mLabel->mSize = glm::min(glm::max(mLabel->mSize, text / canvas.pixels), mPicture->mSize);
    mLabel->mPosition = glm::max(mLabel->mPosition, mPicture->mPosition);
    mLabel->setTextColor(plainTextColor());
    mLabel->setBackgroundColor(backgroundColor());
}

void ThumbnailWidget::refresh(figures::Metrics&) {
    // Two new lines replace both old ones in the block.
    const glm::uvec2 size = mFactory.getSurfaceSize();
    mLabel->addText(utils::strFormat("%ux%u", size.x, size.y));
    mLabel->addText("#" + utils::toString(core::StateInfo::mFrameNumber));
}

void ThumbnailWidget::draw() {
    for (drawer::RectDrawer* const side : mFrame) {
        side->draw();
    }
    mPicture->draw();
    mLabel->draw();
}

}  // namespace scene
