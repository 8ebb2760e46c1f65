#pragma once

#include "gui/FrameData.h"
#include "scene/Reading.h"

namespace scene {

/// The source of a layer's render passes; each API counts them in its own way. Rendering thread only, always
/// within Overlay::beginFrame(). A source that knows the passes at once implements only readFrame(); one that
/// has to measure a frame first, or to wait for results, implements the others too.
class RenderPassSource {
public:
    enum class Progress {
        PENDING,  ///< not yet known
        READY,    ///< readFrame() can be asked
        NONE      ///< they will not be known
    };

    virtual ~RenderPassSource() = default;

    /// A capture begins: measure the frame that begins with the swap after this call, or the one after it
    /// where what is recorded ahead has to be known first.
    virtual void startCapture() {}

    /// Returns the capture's progress. Called in every frame after startCapture() until the result is not
    /// PENDING; must not wait.
    virtual Progress advanceCapture() { return Progress::READY; }

    /// The capture took too long, and nobody will ask for the frame any more.
    virtual void abandonCapture() {}

    /// Fills `frame` with the passes of the captured frame, time stamps in milliseconds. `frame` comes with
    /// the number of the last swapped frame; a source that knows which frame it measured sets that number
    /// instead. `captureStart` is the time of the capture's first counter sample, in seconds of the counters'
    /// clock. It is empty when there are no counters; then use the last frame that the GPU has finished. The
    /// counters' graphs begin with the frame. Returns false when the passes are not known; `frame` is then
    /// ignored.
    virtual bool readFrame(gui::FrameData& frame, Reading captureStart) = 0;
};

}  // namespace scene
