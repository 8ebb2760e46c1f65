#include "scene/Overlay.h"

#include "core/StateInfo.h"

#include <mutex>
#include <vector>

namespace scene {

namespace {

/// The mutex that the background listener takes. Listeners are never taken back and may run as long as the
/// process lives, so it is never destroyed.
std::mutex& backgroundMutex() {
    static auto* mutex = new std::mutex;
    return *mutex;
}

}  // namespace

Overlay::Overlay(PrimitiveFactory& factory, core::RenderingApiType api, RenderPassSource* passes)
    : mScene(factory, api, passes), mFactory(factory), mApi(api) {}

Overlay::~Overlay() {
    detach();
}

void Overlay::onAttach() {
    core::StateInfo::onAttached(backgroundMutex());
}

void Overlay::onDetach() {
    core::StateInfo::onDetached();
    mScene.suspend();
    mIsShown = false;
}

void Overlay::beginFrame() {
    core::StateInfo::onPreSwapBuffers(mApi);

    // What decides on the overlay changes only with a publication, and each one shows here: asking in those
    // frames alone saves the other frames a look at the process's name.
    const bool isChanged = core::StateInfo::isWidgetsUpdated();
    if (isChanged) {
        const bool wasShown = mIsShown;
        mIsShown = core::StateInfo::isOverlayEnabled(mApi);
        if (mIsShown && !wasShown) {
            mScene.restart();
        }
        if (!mIsShown && wasShown) {
            mScene.suspend();
        }
    }
    if (!mIsShown) {
        return;
    }
    const glm::uvec2 size = mFactory.getSurfaceSize();
    if (isChanged || size != mSurfaceSize) {
        mSurfaceSize = size;
        mScene.layout();
    }
    mScene.update();
}

void Overlay::draw() {
    if (mIsShown) {
        onPreDraw();
        mScene.draw();
    }
}

void Overlay::endFrame() {
    static const std::vector<drawer::Drawer*> NONE;
    core::StateInfo::onPostSwapBuffers(mIsShown ? mScene.drawers() : NONE);
}

}  // namespace scene
