#pragma once

#include "drawers/RenderPassDrawer.h"
#include "utils/Export.h"

namespace drawer {

/// The render passes of the last valid frame on a time line as long as the frame, labelled with their
/// indexes. A pass that would overlap the one before is pushed to the right. A pass that is too short for a
/// label becomes a thin, brighter bar.
class KORDANIX_EXPORT FixedRenderPassDrawer : public RenderPassDrawer {
public:
    FixedRenderPassDrawer();
    ~FixedRenderPassDrawer() override;

    /// Draws nothing before the first valid frame.
    void draw() override;

    /// Takes the frame and sorts its passes by their start (NaN comes last). An invalid frame is refused with
    /// an error in the log, and the previous one stays visible.
    void addFrameInfo(const gui::FrameData& frameInfo) override;
    void prelayoutRenderPassText() override;

    /// No block reaches beyond the drawer's edges. A NaN time counts as the frame's start, a NaN duration as
    /// 0.
    void recalculateTextDrawers() override;
};

}  // namespace drawer
