#pragma once

#include "drawers/RenderPassDrawer.h"
#include "utils/Export.h"

#include <cstdint>

namespace drawer {

/// The render passes of a frame as a row of equal cells, each with its pass's index and values. A row wider
/// than the drawer slides to its end and back, and pauses at either end.
///
/// The widths of the row and of characters, the row's offset and its speed are in clip-space units: the
/// canvas is 2 wide and the drawer 2 * mSize.x.
class KORDANIX_EXPORT AnimatedRenderPassDrawer : public RenderPassDrawer {
public:
    AnimatedRenderPassDrawer();
    ~AnimatedRenderPassDrawer() override;

    /// Makes the texts and blocks, moves the row and draws it between onPreDrawWidgets() and
    /// onPostDrawWidgets().
    void draw() override;

    /// Writes the frame into the record, once for each frame id. Writes 0 for values that a pass does not
    /// have.
    void dump(Ostra::FrameDump& frameDump) override;

    /// Accepts any frame, and restarts its cycles.
    void addFrameInfo(const gui::FrameData& frameInfo) override;
    void prelayoutRenderPassText() override;
    void recalculateTextDrawers() override;

    /// draw() calls these right before and after it draws the blocks, which may reach beyond the drawer's
    /// rectangle. The layer supplies them.
    virtual void onPreDrawWidgets() = 0;
    virtual void onPostDrawWidgets() = 0;

    /// Moves the row back to its beginning and restarts its cycles.
    void resetAnimation();

    /// Moves the row while cycles are left. Draws nothing.
    void animateMarquee();

    /// Moves the row by one step; starts a cycle when none is running. First moves the row by the time since
    /// the previous step, even if that step was for another frame; then adds that time to the cycle.
    /// Afterwards the offset is between 2 * mSize.x - mTextWidth and 0, or 0 when there is no such range.
    void calculateCircularMarquee();

    std::uint32_t mLastTickMs = 0;     ///< millisecond clock at the last step
    std::uint32_t mElapsedMs = 0;      ///< time since the cycle began
    float mMarqueeOffset = 0.0F;       ///< of the row: 0, or negative when it has moved left
    bool mIsAnimating = false;         ///< a cycle is running
    float mTextWidth = 0.0F;           ///< of the row
    std::uint32_t mMarqueeCycles = 0;  ///< cycles to run for each frame; set by the layer
    std::uint32_t mMarqueeCyclesDone = 0;
    std::uint32_t mLastDumpedFrameId = 0xFFFFFFFFU;  ///< so that a frame with this id is not dumped first
};

}  // namespace drawer
