#include "opengl/entry/Layer.h"

#include "entry/FrameClock.h"
#include "opengl/passes/PassTimer.h"
#include "ostra/PerProcess.h"
#include "utils/Log.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <limits>

namespace opengl {

namespace {

/// After a failure we try the overlay again 1, 2, 4 and 8 seconds later. Failures far apart do not count
/// together.
constexpr int RETRIES = 4;
constexpr std::int64_t FIRST_RETRY_MS = 1000;
constexpr std::int64_t FORGIVEN_MS = 60000;
constexpr std::int64_t NEVER = std::numeric_limits<std::int64_t>::max();

const ShimCalls* gShim = nullptr;

void tellLayer() {
    if (Layer* const layer = platform::PerProcess<Layer>::find()) {
        layer->onFramebufferBound();
    }
}

}  // namespace

void Layer::setShim(const ShimCalls& shim) {
    gShim = &shim;
}

SwapResult Layer::beforeSwap(const Swap& swap) {
    if (mShared.right.isRefused()) {
        return {};
    }
    Obstacle obstacle = nullptr;
    try {
        if (Context* const context = use(swap, obstacle)) {
            context->obstacle = draw(*context, swap);
            updateListener();
            if (context->overlay != nullptr) {
                return {context, context->obstacle == nullptr};
            }
            report(context->obstacle);
            endUse(*context);
        } else {
            report(obstacle);
        }
    } catch (const std::exception&) {
        // Out of memory, and no context yet to store the failure in: the next frame tries again.
    }
    return {};
}

/// Draws a frame of a context that is in use. After a failure the context has no overlay.
Obstacle Layer::draw(Context& context, const Swap& swap) {
    try {
        if (context.overlay == nullptr) {
            if (context.library->isOpenGlEs1(context.display, context.context)) {
                throw Unusable("its context is of OpenGL ES 1");
            }
            context.overlay = std::make_unique<ContextOverlay>(context.library->lookUp(), mShared);
        }
        const unsigned int changes = gShim->surfaceChanges->load(std::memory_order_relaxed);
        const Obstacle obstacle = context.overlay->beforeSwap(*context.library, swap, changes);
        if (mShared.right.isRefused()) {
            removeOverlay(context);
        }
        return obstacle;
    } catch (const Unusable& error) {
        fail(context, error.what(), true);
    } catch (const std::exception& error) {
        fail(context, error.what(), false);
    }
    return context.failure.data();
}

void Layer::afterSwap(void* frame) {
    Context& context = *static_cast<Context*>(frame);
    try {
        context.overlay->afterSwap(gShim->isMeasuring->load(std::memory_order_relaxed));
    } catch (const std::exception& error) {
        fail(context, error.what(), false);
    }
    updateListener();
    report(context.obstacle, context.overlay != nullptr ? context.overlay->ownTime() : -1);
    endUse(context);
}

/// The handle alone identifies a context, whatever the display.
void Layer::forget(WindowSystem windowSystem, void* display, void* context) {
    const std::lock_guard<std::mutex> lock(mShared.mutex);
    const auto isMeant = [&](const std::unique_ptr<Context>& each) {
        return each->library->windowSystem() == windowSystem &&
               (context != nullptr ? each->context == context : each->display == display);
    };
    for (const std::unique_ptr<Context>& each : mContexts) {
        each->isForgotten = each->isForgotten || isMeant(each);
    }
    mContexts.erase(std::remove_if(mContexts.begin(), mContexts.end(),
                                   [](const auto& each) { return each->isForgotten && !each->isInUse; }),
                    mContexts.end());
}

void Layer::onFramebufferBound() {
    Context* bound = nullptr;
    {
        const std::lock_guard<std::mutex> lock(mShared.mutex);
        for (const std::unique_ptr<Context>& each : mContexts) {
            if (each->overlay != nullptr && !each->isInUse &&
                each->library->currentContext() == each->context) {
                bound = each.get();
                bound->isInUse = true;
            }
        }
    }
    if (bound != nullptr) {
        bound->overlay->onFramebufferBound();
        endUse(*bound);
    }
}

void Layer::onForked() const {
    gShim->framebufferListener->store(nullptr, std::memory_order_relaxed);
}

void Layer::onExit() {
    // Another thread may be in the middle of a frame, or this one may have been.
    const std::unique_lock<std::mutex> lock(mShared.mutex, std::try_to_lock);
    if (lock.owns_lock()) {
        try {
            mStatus.finish();
        } catch (const std::exception&) {
            // Without memory we tell nobody.
        }
    }
}

const WindowLibrary& Layer::libraryOf(const Swap& swap) {
    const std::lock_guard<std::mutex> lock(mShared.mutex);
    for (const std::unique_ptr<WindowLibrary>& each : mLibraries) {
        if (each->isOf(swap)) {
            return *each;
        }
    }
    mLibraries.push_back(std::make_unique<WindowLibrary>(swap, *gShim));
    return *mLibraries.back();
}

/// Returns the context that this swap shows and marks it as in use; null, with the reason, to pass the swap
/// through.
Layer::Context* Layer::use(const Swap& swap, Obstacle& obstacle) {
    const WindowLibrary& library = libraryOf(swap);
    void* const current = library.isUsable() ? library.currentContext() : nullptr;
    if (current == nullptr || !library.isDrawnOn(swap)) {
        obstacle = !library.isUsable()  ? "its EGL or GLX lacks functions"
                   : current == nullptr ? "no context is current when it swaps"
                                        : "it swaps another surface than it draws on";
        return nullptr;
    }
    {
        const std::lock_guard<std::mutex> lock(mShared.mutex);
        for (const std::unique_ptr<Context>& each : mContexts) {
            if (each->context == current && each->display == swap.display && !each->isForgotten) {
                each->isInUse = each->overlay != nullptr || entry::nowMs() >= each->triedAt;
                obstacle = each->failure.data();
                return each->isInUse ? each.get() : nullptr;
            }
        }
    }
    if (!library.isAlive(swap.display, current)) {
        obstacle = "its context was destroyed";
        return nullptr;
    }
    auto context = std::make_unique<Context>(Context{&library, swap.display, current, nullptr});
    context->isInUse = true;
    const std::lock_guard<std::mutex> lock(mShared.mutex);
    mContexts.push_back(std::move(context));
    return mContexts.back().get();
}

void Layer::endUse(Context& context) {
    const std::lock_guard<std::mutex> lock(mShared.mutex);
    context.isInUse = false;
    if (context.isForgotten) {
        mContexts.erase(std::find_if(mContexts.begin(), mContexts.end(),
                                     [&](const auto& each) { return each.get() == &context; }));
    }
}

void Layer::fail(Context& context, const char* reason, bool isFinal) {
    const std::int64_t now = entry::nowMs();
    context.failures = now - context.failedAt < FORGIVEN_MS ? context.failures + 1 : 1;
    context.failedAt = now;
    const bool isOver = isFinal || context.failures > RETRIES;
    context.triedAt = isOver ? NEVER : now + (FIRST_RETRY_MS << (context.failures - 1));
    std::snprintf(context.failure.data(), context.failure.size(), "%s", reason);
    context.obstacle = context.failure.data();
    if (context.failures == 1 || isOver) {
        KORDANIX_LOG_ERROR("a context is passed through%s: %s", KORDANIX_LOG_HERE,
                           isOver ? "" : " for a while", context.failure.data());
    }
    removeOverlay(context);
}

/// Call it on the thread where the context is current.
void Layer::removeOverlay(Context& context) {
    if (context.overlay != nullptr) {
        context.overlay->release();
    }
    const std::lock_guard<std::mutex> lock(mShared.mutex);
    context.overlay.reset();
}

/// Reports what became of a swap, to the log and the note.
void Layer::report(Obstacle obstacle, std::int64_t own) {
    const std::lock_guard<std::mutex> lock(mShared.mutex);
    try {
        mStatus.onFrame(obstacle, own);
        if (mShared.right.isRefused()) {
            mStatus.finish();
        }
        if (obstacle != nullptr && WindowLibrary::isLeftAlone(obstacle) &&
            std::find(mLogged.begin(), mLogged.end(), obstacle) == mLogged.end()) {
            mLogged.push_back(obstacle);
            KORDANIX_LOG_ERROR("a surface is left alone: %s", KORDANIX_LOG_HERE, obstacle);
        }
    } catch (const std::exception&) {
        // Out of memory: a later swap will report it.
    }
}

void Layer::updateListener() {
    gShim->framebufferListener->store(PassTimer::isAnyRecording() ? &tellLayer : nullptr,
                                      std::memory_order_relaxed);
}

}  // namespace opengl
