#pragma once

#include "drawers/RenderPassDrawer.h"
#include "utils/Export.h"

namespace drawer {

/// The render passes of the last valid frame on a time line as long as the frame, labelled with their
/// indexes. Passes that overlap are pushed to the right, those too short for a label are thin, brighter bars.
class KORDANIX_EXPORT FixedRenderPassDrawer : public RenderPassDrawer {
public:
    FixedRenderPassDrawer();
    ~FixedRenderPassDrawer() override;

    /// Draws nothing before the first valid frame.
    void draw() override;

    /// Takes the frame and sorts its passes by their start (those without one, NaN, come last). A frame that
    /// is not valid is refused with an error in the log, and the one before stays on show.
    void addFrameInfo(const gui::FrameData& frameInfo) override;
    void prelayoutRenderPassText() override;

    /// No block reaches beyond the drawer's edges. Times that are not numbers count as the frame's start,
    /// durations as 0.
    void recalculateTextDrawers() override;
};

}  // namespace drawer
