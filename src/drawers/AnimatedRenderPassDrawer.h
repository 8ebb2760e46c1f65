#pragma once

#include "drawers/RenderPassDrawer.h"
#include "utils/Export.h"

#include <cstdint>

namespace drawer {

/// The render passes of a frame as a row of equal cells, each with its pass's index and values. A row wider
/// than the drawer slides to its end and back, with a pause at either end.
///
/// Widths of the row and of characters, the row's offset and its speed are in clip-space units, in which the
/// canvas is 2 wide and the drawer twice its mSize.x.
class KORDANIX_EXPORT AnimatedRenderPassDrawer : public RenderPassDrawer {
public:
    AnimatedRenderPassDrawer();
    ~AnimatedRenderPassDrawer() override;

    /// Makes texts and blocks, moves the row on and draws it, between the layer's two operations.
    void draw() override;

    /// Writes the frame into the record, once for each frame id. Values that a pass does not have are 0.
    void dump(Ostra::FrameDump& frameDump) override;

    /// Accepts any frame, and starts its cycles from the beginning.
    void addFrameInfo(const gui::FrameData& frameInfo) override;
    void prelayoutRenderPassText() override;
    void recalculateTextDrawers() override;

    /// Called right before and after the blocks are drawn, which may reach beyond the drawer's rectangle.
    /// Supplied by the layer.
    virtual void onPreDrawWidgets() = 0;
    virtual void onPostDrawWidgets() = 0;

    /// Puts the row back to its beginning, with all its cycles before it.
    void resetAnimation();

    /// Moves the row on while cycles are left. Draws nothing.
    void animateMarquee();

    /// One step of the row; starts a cycle when none is running. The row first moves by the time since the
    /// previous step, whichever frame that belonged to; then that time is added to the cycle. Afterwards the
    /// offset lies between 2 * mSize.x - mTextWidth and 0 and is 0 when there is no such range.
    void calculateCircularMarquee();

    std::uint32_t mLastTickMs = 0;     ///< millisecond clock at the last step
    std::uint32_t mElapsedMs = 0;      ///< into the cycle
    float mMarqueeOffset = 0.0F;       ///< of the row, 0 or to the left
    bool mIsAnimating = false;         ///< a cycle is running
    float mTextWidth = 0.0F;           ///< of the row
    std::uint32_t mMarqueeCycles = 0;  ///< to run for each frame; set by the layer
    std::uint32_t mMarqueeCyclesDone = 0;
    std::uint32_t mLastDumpedFrameId = 0xFFFFFFFFU;  ///< so that a frame with this id is not dumped first
};

}  // namespace drawer
