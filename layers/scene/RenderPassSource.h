#pragma once

#include "gui/FrameData.h"
#include "scene/Reading.h"

namespace scene {

/// Where a layer's render passes come from: each API counts them in its own way. Rendering thread only,
/// always within Overlay::beginFrame(). A source that knows of a frame at once implements readFrame() alone;
/// one that has to measure a frame first, or to wait for what it measured, the other operations as well.
class RenderPassSource {
public:
    enum class Progress {
        PENDING,  ///< not yet known
        READY,    ///< readFrame() can be asked
        NONE      ///< they will not be known
    };

    virtual ~RenderPassSource() = default;

    /// A capture begins: the frame that begins with the swap after this call is the one to measure.
    virtual void startCapture() {}

    /// How far it is. Asked in every frame after startCapture() until it is no longer PENDING; must not wait.
    virtual Progress advanceCapture() { return Progress::READY; }

    /// Nobody will ask for the frame any more: it took too long.
    virtual void abandonCapture() {}

    /// Fills `frame` with the passes of the frame that was captured, time stamps in milliseconds. It carries
    /// the number of the last frame that was swapped; a source that knows which one it measured puts that in
    /// its place. `captureStart` is the time of the capture's first counter sample in seconds of the
    /// counters' clock; empty when there are no counters, which leaves the last frame that the GPU has
    /// finished. The counters' graphs are drawn as beginning with the frame. False when the passes are not
    /// known; `frame` then does not matter.
    virtual bool readFrame(gui::FrameData& frame, Reading captureStart) = 0;
};

}  // namespace scene
