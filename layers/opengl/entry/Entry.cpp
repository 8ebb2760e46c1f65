#include "opengl/entry/Layer.h"
#include "opengl/shim/LayerCalls.h"
#include "ostra/PerProcess.h"

namespace {

using platform::PerProcess;

constexpr opengl::LayerCalls CALLS = {
    [](const opengl::Swap& swap) { return PerProcess<opengl::Layer>::get().beforeSwap(swap); },
    [](void* frame) {
        // A child that was forked during a swap has records of its own.
        if (opengl::Layer* const layer = PerProcess<opengl::Layer>::find()) {
            layer->afterSwap(frame);
        }
    },
    [](opengl::WindowSystem windowSystem, void* display, void* context) {
        if (opengl::Layer* const layer = PerProcess<opengl::Layer>::find()) {
            layer->forget(windowSystem, display, context);
        }
    },
};

}  // namespace

extern "C" [[gnu::visibility("default")]] const opengl::LayerCalls* kordanixOpenGlLayer(
    const opengl::ShimCalls* shim) {
    opengl::Layer::setShim(*shim);
    return &CALLS;
}
