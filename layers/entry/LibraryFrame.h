#pragma once

#include "entry/Obstacle.h"
#include "entry/OverlayRight.h"

namespace scene {
class Overlay;
}

namespace entry {

/// What a layer that goes into programs does with the library in each frame, before the application's swap:
/// asks for the right to the overlay until it has it, begins the library's frame, and has the scene drawn
/// into its primitives. Calls no graphics API.
///
/// `surface` is why nothing can be drawn in this frame although the library's frame begins; null for nothing.
/// While `mayAsk` is false, it is why the right is not asked for. `isInFrame` becomes true when the library's
/// frame has begun, which the caller ends. Returns why the frame has no overlay; null when it has.
Obstacle beginFrame(scene::Overlay& overlay, OverlayRight& right, Obstacle surface, bool mayAsk,
                    bool& isInFrame);

}  // namespace entry
