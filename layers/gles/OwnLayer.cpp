// In the place of the preloaded shim's LayerLoader.cpp: the layer is in this library itself.

#include "opengl/shim/LayerLoader.h"

#include <pthread.h>

namespace opengl {

std::atomic<FramebufferListener> gFramebufferListener{nullptr};
std::atomic<unsigned int> gSurfaceChanges{0};
std::atomic<bool> gIsMeasuring{false};

namespace {

/// Without findSymbol: Android's linker would not find the libraries that the functions are in.
const ShimCalls SHIM_CALLS{nullptr, &gFramebufferListener, &gSurfaceChanges, &gIsMeasuring};

pthread_once_t gOnce = PTHREAD_ONCE_INIT;
std::atomic<const LayerCalls*> gLayer{nullptr};

}  // namespace

const LayerCalls* loadLayer() {
    pthread_once(&gOnce, [] { gLayer.store(kordanixOpenGlLayer(&SHIM_CALLS), std::memory_order_release); });
    return loadedLayer();
}

const LayerCalls* loadedLayer() {
    return gLayer.load(std::memory_order_acquire);
}

}  // namespace opengl
