#include "scene/Scene.h"

#include "core/StateInfo.h"
#include "gui/LayoutManager.h"
#include "scene/Canvas.h"
#include "scene/FigureWidget.h"
#include "scene/FigureWidgets.h"
#include "scene/FrameTimeWidget.h"
#include "scene/FrameTimer.h"
#include "scene/GpuActivityWidget.h"
#include "scene/ThumbnailWidget.h"
#include "scene/WidgetRoom.h"
#include "scene/WidgetScale.h"

#include <algorithm>
#include <utility>

namespace scene {

Scene::Scene(PrimitiveFactory& factory, core::RenderingApiType api, RenderPassSource* passes,
             FrameTimer* timer)
    : mFactory(factory), mTimer(timer), mDumpMark(factory), mNotice(factory) {
    mWidgets.push_back(std::make_unique<FigureWidget>(factory, FPS_WIDGET));
    mWidgets.push_back(std::make_unique<FigureWidget>(factory, CPU_GPU_WIDGET));
    mWidgets.push_back(std::make_unique<FigureWidget>(factory, MEMORY_WIDGET));
    auto activity = std::make_unique<GpuActivityWidget>(factory, api, passes);
    auto strip = std::make_unique<FrameTimeWidget>(factory, mFrameTimes, *activity);
    mStrip = strip.get();
    mWidgets.push_back(std::move(activity));
    mWidgets.push_back(std::move(strip));
    mWidgets.push_back(std::make_unique<ThumbnailWidget>(factory));
}

void Scene::layout() {
    const glm::vec2 scale = widgetScale(mFactory.getSurfaceSize());
    const Canvas canvas(mFactory.getSurfaceSize(), scale);
    std::vector<WidgetShape> shapes;
    for (const auto& widget : mWidgets) {
        widget->enable();
        widget->collectShapes(canvas, shapes);
    }
    arrangeAreas(scale, shapes);
    gui::LayoutManager::getInstance()->updateWidgetsLayouts(canvas.isPortrait);
    const WidgetSet withoutRoom = widgetsWithoutRoom();
    mShownFigures.reset();
    mWanted.clear();
    mShown.clear();
    mShownDrawers.clear();
    for (const auto& widget : mWidgets) {
        widget->layout(canvas, withoutRoom);
        if (widget->isShown()) {
            mShown.push_back(widget.get());
            widget->collectDrawers(mShownDrawers);
        }
        if (widget->isWanted()) {
            mWanted.push_back(widget.get());
            widget->collectFigures(mShownFigures);
        }
    }
    mDumpMark.layout(canvas);
    mNotice.read();
    mNotice.layout(canvas);
    mExtraDump.tellSurface(mFactory.getSurfaceSize());
    mIsStripShown = mStrip->isShown();
    mIsChanged = true;
    wantFigures();
}

void Scene::wantFigures() {
    figures::FigureSet wanted = mShownFigures;
    for (std::size_t i = 0; mIsWatched && i < figures::catalogue().count; ++i) {
        wanted.set(i);
    }
    mMetrics.want(wanted);
}

void Scene::setWatched(bool isWatched) {
    if (std::exchange(mIsWatched, isWatched) != isWatched) {
        wantFigures();
    }
}

void Scene::update() {
    mIsRefreshed = false;
    takeGpuTimes();
    const bool wasDumping = std::exchange(mIsDumping, core::StateInfo::isDumpingEnabled());
    mIsChanged = mNotice.expire() || mIsChanged || mIsDumping != wasDumping;
    for (WidgetView* widget : mShown) {
        mIsChanged = widget->onFrame() || mIsChanged;
    }
    // Asked before this frame is counted, so that the frames counted are the ones that ended in the interval.
    if (mPacing.isUpdateDuration()) {
        mMetrics.refresh(mPacing.mFrameCount, mPacing.mUpdateDuration);
        ++mRefreshes;
        mIsRefreshed = true;
        bool isLayoutStale = false;
        for (WidgetView* widget : mWanted) {
            widget->refresh(mMetrics);
            isLayoutStale = isLayoutStale || widget->isLayoutStale();
        }
        if (isLayoutStale) {
            layout();
        }
        mExtraDump.tell(mMetrics);
        mFrameLog.tell(mMetrics);
        mPacing.resetUpdateDuration();
        mIsChanged = true;
    }
    mPacing.incFrameCount();
}

void Scene::finishFrame() {
    const bool isDumping = core::StateInfo::isDumpingEnabled();
    if (mFrameTimes.finish()) {
        const FrameTime& frame = mFrameTimes.ago(0);
        mMetrics.addFrame(frame.total);
        mFrameLog.tellFrame(mFrameTimes);
        if (isDumping) {
            mExtraDump.tellFrame(frame, std::exchange(mLastGpuTime, FrameTime::NOT_MEASURED));
        }
    }
    if (mTimer != nullptr) {
        mTimer->beginFrame(mFrameTimes.name(),
                           isDumping || mIsStripShown || mMetrics.isGpuTimeWanted() || mFrameLog.isWritten());
    }
}

void Scene::takeGpuTimes() {
    FrameTimer::Time time;
    while (mTimer != nullptr && mTimer->take(time)) {
        if (const FrameTime* const frame = mFrameTimes.setGpu(time.frame, time.nanoseconds)) {
            mMetrics.addGpuTime(time.nanoseconds, frame->total);
            mLastGpuTime = frame->gpu;
            mFrameLog.tellGpu(*frame);
        }
    }
}

void Scene::logFrame() {
    if (mFrameTimes.finish()) {
        mFrameLog.tellFrame(mFrameTimes);
    }
}

void Scene::restart() {
    mPacing.initUpdateHelper();
    mMetrics.restart();
}

void Scene::suspend() {
    mMetrics.want({});
    mFrameLog.tellNothing();
    mFrameTimes.forgetHook();
    if (mTimer != nullptr) {
        mTimer->beginFrame(0, false);
    }
}

void Scene::draw() {
    if (!mFactory.beginDrawing(!std::exchange(mIsChanged, false))) {
        return;
    }
    for (WidgetView* widget : mShown) {
        if (widget->hasRoom()) {
            widget->draw();
        }
    }
    if (mIsDumping) {
        mDumpMark.draw();
    }
    if (mNotice.isShown()) {
        mNotice.draw();
    }
}

bool Scene::layoutNotice() {
    mNotice.read();
    if (mNotice.isShown()) {
        mNotice.layout(Canvas(mFactory.getSurfaceSize(), widgetScale(mFactory.getSurfaceSize())));
        mIsChanged = true;
    }
    return mNotice.isShown();
}

bool Scene::updateNotice() {
    mIsChanged = mNotice.expire() || mIsChanged;
    return mNotice.isShown();
}

void Scene::drawNotice() {
    if (mFactory.beginDrawing(!std::exchange(mIsChanged, false)) && mNotice.isShown()) {
        mNotice.draw();
    }
}

void Scene::settle() {
    mMetrics.settle();
    for (WidgetView* widget : mShown) {
        widget->settle();
    }
}

}  // namespace scene
