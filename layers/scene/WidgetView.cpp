#include "scene/WidgetView.h"

#include "gui/LayoutManager.h"
#include "gui/WidgetsSettings.h"

#include <cstdint>

namespace scene {

WidgetView::WidgetView(gui::WidgetType type) : mWidget(gui::LayoutManager::getInstance()->getWidget(type)) {}

bool WidgetView::isShown() const {
    using Position = gui::WidgetsSettings::Position;
    const auto position = static_cast<Position>(mWidget->mPosition);
    return mWidget->mEnabled && position >= Position::TOP_LEFT && position <= Position::BOTTOM_RIGHT;
}

void WidgetView::layout(const Canvas& canvas, const WidgetSet& withoutRoom) {
    mIsLayoutStale = false;
    mHasRoom = !withoutRoom.test(static_cast<std::size_t>(mWidget->mType));
    for (const auto& drawer : mDrawers) {
        gui::LayoutManager::getInstance()->updateDrawerLayout(drawer.get());
    }
    applySettings(canvas);
}

void WidgetView::collectDrawers(std::vector<drawer::Drawer*>& drawers) const {
    for (const auto& drawer : mDrawers) {
        if (drawer->mEnabled) {
            drawers.push_back(drawer.get());
        }
    }
}

}  // namespace scene
