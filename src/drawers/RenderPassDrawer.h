#pragma once

#include "drawers/Drawer.h"
#include "drawers/TextblockDrawer.h"
#include "gui/FrameData.h"
#include "utils/Export.h"

#include <cstdint>
#include <glm/vec4.hpp>
#include <memory>
#include <vector>

namespace drawer {

/// The common part of the widgets that show a frame's render passes: the frame, and a text block for each of
/// its passes, which every draw makes again. The rendering thread calls everything, addFrameInfo() too.
class KORDANIX_EXPORT RenderPassDrawer : public Drawer {
public:
    RenderPassDrawer();

    /// Destroys the frame's passes, then the blocks from last to first.
    ~RenderPassDrawer() override;

    /// Shows another frame.
    virtual void addFrameInfo(const gui::FrameData& frameInfo) = 0;

    /// Creates a text block with that many lines, whose text is at most `textSizeHint` surface pixels high.
    /// Never returns null. The layer supplies it.
    virtual std::unique_ptr<TextblockDrawer> createTextblockDrawer(unsigned int lineCount,
                                                                   unsigned int textSizeHint) = 0;

    /// Writes the texts of the frame's passes.
    virtual void prelayoutRenderPassText() = 0;

    /// Makes the blocks again, one for each of the frame's passes and in their order.
    virtual void recalculateTextDrawers() = 0;

    /// 1 in landscape, 0 in portrait; must match the current render areas. The layer supplies it.
    virtual unsigned int getOrientation() = 0;

    /// Asks for the orientation, then makes the texts and the blocks.
    void measureWidgets();

    /// Draws the blocks at their places, in the text colour and shifted by mTranslation.
    void drawWidgets();

    /// Does the same as drawWidgets().
    void drawText();

    // For derived classes.

    /// Destroys the blocks from last to first.
    void destroyTextblocks();

    /// Creates a block with a single line, in the drawer's height.
    std::unique_ptr<TextblockDrawer> makeBlock();

    /// The gap between two blocks: 1/100 of the drawer's width, in landscape half of that.
    float blockGap() const;

    std::vector<std::unique_ptr<TextblockDrawer>> mTextblocks;
    gui::FrameData mFrameData{0, {}};
    std::uint32_t mOrientation = 1;  ///< the last result of getOrientation()
    glm::vec4 mTextColor{1.0F, 1.0F, 1.0F, 0.5F};
    glm::vec4 mBackgroundColor{0.0F, 0.0F, 0.0F, 1.0F};
};

}  // namespace drawer
