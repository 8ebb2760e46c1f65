// The shortest complete layer: one widget, the library's calls in order, and an application with five frames.
#include "Primitives.h"
#include "core/BaseLayer.h"
#include "core/KeyEventInterceptor.h"
#include "core/StateInfo.h"
#include "drawers/GraphicDrawer.h"
#include "gui/LayoutManager.h"
#include "gui/WidgetsSettings.h"
#include "utils/StringFormat.h"
#include "utils/UpdateHelper.h"

#include <unistd.h>

constexpr auto API = static_cast<core::RenderingApiType>(7);  // debug.kordanix.api selects this layer by it

class NullLayer : public core::BaseLayer {
public:
    NullLayer() {
        mStrip.mRenderArea = gui::RenderAreaType::FPS_STRIP;
        mText.mRenderArea = gui::RenderAreaType::FPS_TEXT_1;
        mGraph.mRenderArea = gui::RenderAreaType::FPS_GRAPH;
    }
    ~NullLayer() override { detach(); }
    void beforeSwap() {
        *KeyEventInterceptor::getInstance() = {};  // the hook polls the keys only while the overlay is on
        core::StateInfo::onPreSwapBuffers(API);
        if (core::StateInfo::isWidgetsUpdated()) {
            layOut();  // a real layer also does so when the surface has changed
        }
        mIsShown = core::StateInfo::isOverlayEnabled(API);
        if (!mIsShown) {
            return;
        }
        if (mPacing.isUpdateDuration()) {  // every 120 ms
            const float fps = mState.getFPS(mPacing.mFrameCount, mPacing.mUpdateDuration);
            mText.setText(utils::strFormat("FPS %.1f", fps));
            mGraph.addValue(fps, mState.getMaxFPS());
            mPacing.resetUpdateDuration();
        }
        mPacing.incFrameCount();
        if (mWidget->mEnabled) {
            for (drawer::Drawer* drawer : mDrawers) {
                drawer->draw();
            }
        }
    }
    void afterSwap() {
        core::StateInfo::onPostSwapBuffers(mIsShown ? mDrawers : std::vector<drawer::Drawer*>());
    }

private:
    void onAttach() override {
        static auto* const mutex = new std::mutex;  // locked by the background notice, so never destroyed
        core::StateInfo::onAttached(*mutex);
    }
    void onDetach() override { core::StateInfo::onDetached(); }
    void layOut() {
        auto* const manager = gui::LayoutManager::getInstance();
        manager->updateWidgetsLayouts(SURFACE.y > SURFACE.x);
        for (drawer::Drawer* drawer : mDrawers) {
            drawer->mWidget = mWidget;
            manager->updateDrawerLayout(drawer);
        }
        const auto& settings = gui::WidgetsSettings::getWidgets();
        mStrip.mColor = mGraph.mBackground->mColor = settings.bgColor();
        mText.setTextColor(settings.mFps.mCurrent.getTextColor());
        mGraph.setColor(settings.mFps.mCurrent.getGraphColor(2));
    }

    core::StateInfo mState;
    UpdateHelper mPacing;
    gui::Widget* mWidget = gui::LayoutManager::getInstance()->getWidget(gui::WidgetType::FPS);
    Rect mStrip;
    Text mText;
    drawer::GraphicDrawer mGraph{100,
                                 std::make_unique<Mesh>("triangle strip"),
                                 std::make_unique<Mesh>("line strip"),
                                 std::make_unique<Rect>(),
                                 std::make_unique<Grid>(std::make_unique<Mesh>("lines")),
                                 gui::WidgetValueType::FPS};
    const std::vector<drawer::Drawer*> mDrawers{&mStrip, &mText, &mGraph};
    bool mIsShown = false;
};

int main() {
    NullLayer layer;
    layer.attach();
    for (int frame = 1; frame <= 5; ++frame) {
        std::printf("frame %d\n", frame);
        layer.beforeSwap();
        usleep(70'000);  // stands for the application's swap
        layer.afterSwap();
    }
}
