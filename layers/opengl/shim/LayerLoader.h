#pragma once

#include "opengl/shim/LayerCalls.h"

namespace opengl {

/// The first call loads the layer from the shim's own folder; other threads wait for it. If that fails, it
/// logs the failure once and always returns null. Any thread.
const LayerCalls* loadLayer();

/// Returns the layer if it has been loaded. Never waits.
const LayerCalls* loadedLayer();

/// Whether the program has swapped: the first swap calls loadLayer().
bool hasSwapped();

extern std::atomic<FramebufferListener> gFramebufferListener;
extern std::atomic<unsigned int> gSurfaceChanges;
extern std::atomic<bool> gIsMeasuring;

}  // namespace opengl
