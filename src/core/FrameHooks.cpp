// The frame hooks. This is the only file where the state meets the layout manager and the drawers.

#include "core/KeyEventInterceptor.h"
#include "core/StateInfo.h"
#include "drawers/Drawer.h"
#include "gui/LayoutManager.h"
#include "gui/WidgetsSettings.h"

#include <ostra/Ostra.h>

#include <chrono>

namespace core {

namespace {

void recordFrame(const std::vector<drawer::Drawer*>& drawers) {
    using std::chrono::duration_cast;
    using std::chrono::milliseconds;

    Ostra::FrameDump record{};
    record.frameNumber = StateInfo::mFrameNumber;
    record.timestampMs =
        duration_cast<milliseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
    record.values.resize(gui::gWidgetsMeta.size());
    for (drawer::Drawer* const drawer : drawers) {
        drawer->dump(record);
    }
    Ostra::addDump(record);
}

void startDump(const std::vector<drawer::Drawer*>& drawers) {
    StateInfo::mIsDumpingEnabled.store(true, std::memory_order_relaxed);
    StateInfo::mIsNeedToResetFps = true;
    for (drawer::Drawer* const drawer : drawers) {
        drawer->clear();
    }
    Ostra::startDumping(gui::gWidgetsMeta);
}

void toggleDump(const std::vector<drawer::Drawer*>& drawers) {
    if (StateInfo::mIsDumpingEnabled.exchange(false, std::memory_order_relaxed)) {
        Ostra::finishDumping();
    } else {
        startDump(drawers);
    }
}

}  // namespace

void StateInfo::onPreSwapBuffers(RenderingApiType api) {
    mIsWidgetsUpdated = gui::LayoutManager::getInstance()->updateConfig();
    const bool isEnabled = isOverlayEnabled(api);
    if (mIsWidgetsUpdated) {
        if (isEnabled && mFixClockProp.getValue()) {
            fixClock();
        } else {
            unfixClock();
        }
    }
    if (isEnabled) {
        KeyEventInterceptor::getInstance()->updateState();
    }
}

void StateInfo::onPostSwapBuffers(const std::vector<drawer::Drawer*>& drawers) {
    ++mFrameNumber;
    // Record first, so that a dump contains the frame that stops it but not the one that starts it.
    if (isDumpingEnabled()) {
        recordFrame(drawers);
    }
    if (mDevModeProp.getValue() && KeyEventInterceptor::getInstance()->mIsDumpKeyPressed) {
        toggleDump(drawers);
    }
}

bool StateInfo::isWidgetsUpdated() {
    return mIsWidgetsUpdated;
}

void StateInfo::invalidateWidgets() {
    mIsWidgetsUpdated = true;
}

bool StateInfo::isNeedToCaptureData() {
    return mDevModeProp.getValue() && KeyEventInterceptor::getInstance()->mIsCaptureKeyPressed;
}

bool StateInfo::isDumpingEnabled() {
    return mIsDumpingEnabled.load(std::memory_order_relaxed);
}

}  // namespace core
