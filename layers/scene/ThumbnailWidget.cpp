#include "scene/ThumbnailWidget.h"

#include "core/StateInfo.h"
#include "drawers/TextblockDrawer.h"
#include "scene/RenderPassRows.h"
#include "scene/Style.h"
#include "utils/StringFormat.h"

namespace scene {

namespace {

using Area = gui::RenderAreaType;

constexpr unsigned int LABEL_LINES = 2;

}  // namespace

ThumbnailWidget::ThumbnailWidget(PrimitiveFactory& factory)
    : WidgetView(gui::WidgetType::GPU_ACTIVITY_THUMBNAIL),
      mFactory(factory),
      mPicture(&place(factory.createThumbnail(), Area::GPU_ACTIVITY_THUMBNAIL_WHOLE)),
      mLabel(&place(createTextblock(factory, LABEL_LINES, 0), Area::GPU_ACTIVITY_THUMBNAIL_LABEL)) {}

void ThumbnailWidget::applySettings(float) {
    mLabel->setTextColor(plainTextColor());
    mLabel->setBackgroundColor(backgroundColor());
}

void ThumbnailWidget::refresh(Metrics&) {
    // Two new lines push both old ones out of the block.
    const glm::uvec2 size = mFactory.getSurfaceSize();
    mLabel->addText(utils::strFormat("%ux%u", size.x, size.y));
    mLabel->addText("#" + utils::toString(core::StateInfo::mFrameNumber));
}

void ThumbnailWidget::draw() {
    mPicture->draw();
    mLabel->draw();
}

}  // namespace scene
