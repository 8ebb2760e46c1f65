#include "scene/Overlay.h"

#include "core/KeyEventInterceptor.h"
#include "core/StateInfo.h"
#include "utils/SystemInfoHelper.h"

#include <mutex>
#include <utility>
#include <vector>

namespace scene {

namespace {

/// The mutex that the background listener locks. Listeners are never removed and may run as long as the
/// process lives, so it is never destroyed.
std::mutex& backgroundMutex() {
    static auto* mutex = new std::mutex;
    return *mutex;
}

/// Publications so far. The library reports each one in a single frame, which may be another layer's.
std::uint32_t publications = 0;

/// Whether this process and API show the overlay when it is switched on.
bool isChosen(core::RenderingApiType api) {
    return core::StateInfo::mRenderApiProp.getValue() == api &&
           utils::getProcessName() == core::StateInfo::mDebugProcessNameProp.getValue();
}

}  // namespace

Overlay::Overlay(PrimitiveFactory& factory, core::RenderingApiType api, RenderPassSource* passes,
                 FrameTimer* timer)
    : mScene(factory, api, passes, timer),
      mFactory(factory),
      mKeys(*KeyEventInterceptor::getInstance()),
      mApi(api) {}

Overlay::~Overlay() {
    detach();
}

void Overlay::onAttach() {
    core::StateInfo::onAttached(backgroundMutex());
    mSeenPublications = publications - 1;  // the first frame decides anew
}

void Overlay::onDetach() {
    core::StateInfo::onDetached();
    mScene.suspend();
    mIsShown = false;
    mIsTimed = false;
    mHasNotice = false;
}

void Overlay::enter() {
    if (mIsShown) {
        mScene.mFrameTimes.onHook();
    }
}

void Overlay::beginFrame() {
    // The library polls the keys only while the overlay is on, and switching it off reaches us only with a
    // publication. So some frames are shown without a poll; a key must not count again in them.
    mKeys.mIsDumpKeyPressed = false;
    mKeys.mIsCaptureKeyPressed = false;
    core::StateInfo::onPreSwapBuffers(mApi);
    mIsDumpKeyPressed = mKeys.mIsDumpKeyPressed;

    // Only a publication can change whether the overlay is shown, and each one shows here. So we ask only in
    // those frames, which saves the others the reading of the process's name.
    publications += core::StateInfo::isWidgetsUpdated() ? 1 : 0;
    const bool isChanged = std::exchange(mSeenPublications, publications) != publications;
    if (isChanged) {
        decide();
    }
    if (mIsShown) {
        update(isChanged);
    } else if (isChanged || mHasNotice) {
        updateNotice(isChanged);
    }
}

void Overlay::update(bool isPublished) {
    const glm::uvec2 size = mFactory.getSurfaceSize();
    if (isPublished || size != mSurfaceSize) {
        mSurfaceSize = size;
        mScene.layout();
    }
    mScene.update();
}

void Overlay::decide() {
    const bool wasShown = mIsShown;
    const bool wasTimed = mIsTimed;
    mIsShown = core::StateInfo::isOverlayEnabled(mApi);
    mIsTimed = mIsShown || isChosen(mApi);
    if (mIsTimed && !wasTimed) {
        mScene.mFrameTimes.restart();
    }
    if (mIsShown && !wasShown) {
        mHasNotice = false;
        mScene.restart();
    }
    if (!mIsShown && wasShown) {
        mScene.suspend();
    }
}

void Overlay::updateNotice(bool isPublished) {
    const glm::uvec2 size = mFactory.getSurfaceSize();
    if (isPublished || size != mSurfaceSize) {
        mSurfaceSize = size;
        mHasNotice = isChosen(mApi) && mScene.layoutNotice();
    }
    mHasNotice = mHasNotice && mScene.updateNotice();
}

void Overlay::draw() {
    if (mIsShown) {
        onPreDraw();
        mScene.draw();
    } else if (mHasNotice) {
        mScene.drawNotice();
    }
    beginSwap();
}

void Overlay::beginSwap() {
    if (mIsTimed) {
        mScene.mFrameTimes.onSwap();
    }
}

void Overlay::endSwap() {
    if (mIsTimed) {
        mIsSwapped = true;
        mScene.mFrameTimes.onSwapped();
    }
}

void Overlay::endFrame() {
    if (mIsTimed) {
        if (!std::exchange(mIsSwapped, false)) {
            mScene.mFrameTimes.onSwapped();
        }
        if (mIsShown) {
            mScene.finishFrame();
        } else {
            mScene.logFrame();
        }
    }
    static const std::vector<drawer::Drawer*> NONE;
    // Another overlay's frame may have begun meanwhile, and a key belongs to the one that is shown.
    mKeys.mIsDumpKeyPressed = mIsShown && mIsDumpKeyPressed;
    core::StateInfo::onPostSwapBuffers(mIsShown ? mScene.drawers() : NONE);
}

void Overlay::leave() {
    if (mIsShown) {
        mScene.mFrameTimes.onLeft();
    }
}

}  // namespace scene
