#pragma once

#include "opengl/shim/LayerCalls.h"

namespace opengl {

/// The layer, loaded by the first call from the shim's own folder. Null for good when that failed, which is
/// logged once. Any thread; others wait for the first one.
const LayerCalls* loadLayer();

/// The layer if it has been loaded. Never waits.
const LayerCalls* loadedLayer();

/// Whether loadLayer() was ever called, which a swap does.
bool hasSwapped();

extern std::atomic<FramebufferListener> gFramebufferListener;
extern std::atomic<unsigned int> gSurfaceChanges;
extern std::atomic<bool> gIsMeasuring;

}  // namespace opengl
