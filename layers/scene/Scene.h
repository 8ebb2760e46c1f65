#pragma once

#include "core/RenderingApiType.h"
#include "figures/Metrics.h"
#include "scene/DumpMark.h"
#include "scene/ExtraDump.h"
#include "scene/FrameLog.h"
#include "scene/FrameTimes.h"
#include "scene/Notice.h"
#include "scene/PrimitiveFactory.h"
#include "scene/WidgetView.h"
#include "utils/UpdateHelper.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace scene {

class FrameTimeWidget;
class FrameTimer;
class RenderPassSource;

/// All widgets of the overlay on one surface: who draws what, where, from which figure. Knows no graphics
/// API; what it needs of one comes from the factory. Rendering thread only.
class Scene {
public:
    /// The factory, the source of render passes and the timer (null if there is none) outlive the scene.
    Scene(PrimitiveFactory& factory, core::RenderingApiType api, RenderPassSource* passes, FrameTimer* timer);

    /// Lays everything out anew: after a change of the settings or of the surface.
    void layout();

    /// Once a frame, before draw(): counts the frame and, each 120 ms, brings the figures up to date.
    void update();

    /// Once a frame, after its swap, whose moments mFrameTimes has been told.
    void finishFrame();

    /// The same while the overlay is switched off: the frame goes into logs, and nowhere else.
    void logFrame();

    /// The overlay was not shown for a while: what comes now does not follow on what was before.
    void restart();

    /// The overlay is not shown from now on: ends what runs in the background.
    void suspend();

    /// While the overlay is switched off, a new notice is shown all the same, and nothing else: looks for one
    /// after a publication, and returns whether it is to be shown in this frame.
    bool layoutNotice();
    bool updateNotice();

    /// Draws the widgets that are shown, unless the factory shows again what was drawn last.
    void draw();
    void drawNotice();

    /// What is on the screen, in drawing order, for the post-swap hook.
    const std::vector<drawer::Drawer*>& drawers() const { return mShownDrawers; }

    /// Somebody watches from outside: all figures of the catalogue are read, whether a widget shows them or
    /// not.
    void setWatched(bool isWatched);
    bool isWatched() const { return mIsWatched; }

    const figures::Metrics& metrics() const { return mMetrics; }

    /// How often the figures were brought up to date.
    std::uint32_t refreshes() const { return mRefreshes; }

    /// Whether they were in this frame.
    bool isRefreshed() const { return mIsRefreshed; }

    /// Waits for everything that runs in the background: for pictures that must not depend on timing.
    void settle();

    FrameTimes mFrameTimes;

private:
    void takeGpuTimes();
    void wantFigures();

    PrimitiveFactory& mFactory;
    FrameTimer* mTimer;
    figures::Metrics mMetrics;
    ExtraDump mExtraDump;
    FrameLog mFrameLog;
    DumpMark mDumpMark;
    bool mIsDumping = false;  // as the last drawing says
    Notice mNotice;
    UpdateHelper mPacing;
    std::uint32_t mRefreshes = 0;
    bool mIsRefreshed = false;
    figures::FigureSet mShownFigures;  // by the widgets
    bool mIsWatched = false;
    bool mIsChanged = true;  // since the last draw
    std::vector<std::unique_ptr<WidgetView>> mWidgets;
    FrameTimeWidget* mStrip = nullptr;
    bool mIsStripShown = false;
    std::int64_t mLastGpuTime = FrameTime::NOT_MEASURED;  // until it is in a dump
    std::vector<WidgetView*> mWanted;
    std::vector<WidgetView*> mShown;
    std::vector<drawer::Drawer*> mShownDrawers;
};

}  // namespace scene
