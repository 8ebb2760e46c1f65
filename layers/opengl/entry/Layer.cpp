#include "opengl/entry/Layer.h"

#include <algorithm>
#include <exception>

#include "opengl/passes/PassTimer.h"
#include "ostra/PerProcess.h"
#include "utils/Log.h"

namespace opengl {

namespace {

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
    Context* context = nullptr;
    try {
        context = use(libraryOf(swap), swap);
        if (context == nullptr) {
            return {};
        }
        const bool hasDrawn = context->overlay->beforeSwap(*context->library, swap);
        updateListener();
        return {context, hasDrawn};
    } catch (const std::exception& error) {
        if (context != nullptr) {
            fail(*context, error.what());
        }
        return {};
    }
}

void Layer::afterSwap(void* frame) {
    Context& context = *static_cast<Context*>(frame);
    try {
        context.overlay->afterSwap();
        updateListener();
        endUse(context);
    } catch (const std::exception& error) {
        fail(context, error.what());
    }
}

/// A handle alone tells contexts apart, whatever display it was given with.
void Layer::forget(WindowSystem windowSystem, void* display, void* context) {
    const std::lock_guard<std::mutex> lock(mMutex);
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
        const std::lock_guard<std::mutex> lock(mMutex);
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

const WindowLibrary& Layer::libraryOf(const Swap& swap) {
    const std::lock_guard<std::mutex> lock(mMutex);
    for (const std::unique_ptr<WindowLibrary>& each : mLibraries) {
        if (each->isOf(swap)) {
            return *each;
        }
    }
    mLibraries.push_back(std::make_unique<WindowLibrary>(swap, *gShim));
    if (!mLibraries.back()->isUsable()) {
        KORDANIX_LOG_ERROR("a library's swaps are passed through: it lacks functions", KORDANIX_LOG_HERE);
    }
    return *mLibraries.back();
}

Layer::Context* Layer::use(const WindowLibrary& library, const Swap& swap) {
    void* const current = library.isUsable() ? library.currentContext() : nullptr;
    if (current == nullptr || !library.isDrawnOn(swap)) {
        return nullptr;
    }
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        for (const std::unique_ptr<Context>& each : mContexts) {
            if (each->context == current && each->display == swap.display && !each->isForgotten) {
                each->isInUse = each->overlay != nullptr;
                return each->isInUse ? each.get() : nullptr;
            }
        }
    }
    return library.isAlive(swap.display, current) ? add(library, swap.display, current) : nullptr;
}

Layer::Context* Layer::add(const WindowLibrary& library, void* display, void* context) {
    auto record = std::make_unique<Context>(Context{&library, display, context, nullptr});
    try {
        record->overlay = std::make_unique<ContextOverlay>(library.lookUp(), mMutex);
        record->isInUse = true;
    } catch (const std::exception& error) {
        KORDANIX_LOG_ERROR("a context is passed through: %s", KORDANIX_LOG_HERE, error.what());
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    mContexts.push_back(std::move(record));
    return mContexts.back()->isInUse ? mContexts.back().get() : nullptr;
}

void Layer::endUse(Context& context) {
    const std::lock_guard<std::mutex> lock(mMutex);
    context.isInUse = false;
    if (context.isForgotten) {
        mContexts.erase(std::find_if(mContexts.begin(), mContexts.end(),
                                     [&](const auto& each) { return each.get() == &context; }));
    }
}

void Layer::fail(Context& context, const char* reason) {
    KORDANIX_LOG_ERROR("a context is passed through from now on: %s", KORDANIX_LOG_HERE, reason);
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        context.overlay.reset();
    }
    updateListener();
    endUse(context);
}

void Layer::updateListener() {
    gShim->framebufferListener->store(PassTimer::isAnyRecording() ? &tellLayer : nullptr,
                                      std::memory_order_relaxed);
}

}  // namespace opengl
