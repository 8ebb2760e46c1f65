#include "scene/ThumbnailWidget.h"

#include "core/StateInfo.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextblockDrawer.h"
#include "scene/Canvas.h"
#include "scene/RenderPassRows.h"
#include "scene/Style.h"
#include "utils/StringFormat.h"

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
      mFrame(&place(factory.createRect(), Area::GPU_ACTIVITY_THUMBNAIL_WHOLE)),
      mPicture(&place(factory.createThumbnail(), Area::GPU_ACTIVITY_THUMBNAIL_WHOLE)),
      mLabel(&place(createTextblock(factory, LABEL_LINES, 0), Area::GPU_ACTIVITY_THUMBNAIL_LABEL)) {
    mLabel->setTextGravity(gui::TextGravity::CENTER);
}

void ThumbnailWidget::applySettings(const Canvas& canvas) {
    mFrame->mColor = backgroundColor();
    inset(*mPicture, glm::vec2(FRAME_WIDTH), canvas);
    inset(*mLabel, glm::vec2(FRAME_WIDTH), canvas);
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
    mFrame->draw();
    mPicture->draw();
    mLabel->draw();
}

}  // namespace scene
