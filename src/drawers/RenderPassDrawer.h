#pragma once

#include "drawers/Drawer.h"
#include "drawers/TextblockDrawer.h"
#include "gui/FrameData.h"
#include "utils/Export.h"

#include <glm/vec4.hpp>

#include <cstdint>
#include <memory>
#include <vector>

namespace drawer {

/// What the widgets that show a frame's render passes have in common: the frame, and a text block for each of
/// its passes, made anew at every draw. addFrameInfo() belongs to the rendering thread like all else.
class KORDANIX_EXPORT RenderPassDrawer : public Drawer {
public:
    RenderPassDrawer();

    /// Destroys the frame's passes, then the blocks from last to first.
    ~RenderPassDrawer() override;

    /// Replaces the frame on show.
    virtual void addFrameInfo(const gui::FrameData& frameInfo) = 0;

    /// A new text block of that many lines whose text is at most `textSizeHint` surface pixels high. Never
    /// null. Supplied by the layer.
    virtual std::unique_ptr<TextblockDrawer> createTextblockDrawer(unsigned int lineCount,
                                                                   unsigned int textSizeHint) = 0;

    /// Writes the texts of the frame's passes.
    virtual void prelayoutRenderPassText() = 0;

    /// Makes the blocks anew, one for each of the frame's passes and in their order.
    virtual void recalculateTextDrawers() = 0;

    /// 1 in landscape, 0 in portrait, in agreement with the render areas in use. Supplied by the layer.
    virtual unsigned int getOrientation() = 0;

    /// Asks for the orientation, then makes texts and blocks.
    void measureWidgets();

    /// Draws the blocks where they are, in the text colour and moved by mTranslation.
    void drawWidgets();

    /// The same as drawWidgets().
    void drawText();

    // For the widgets built on this class.

    /// Destroys the blocks from last to first.
    void destroyTextblocks();

    /// A new block of a single line, in the drawer's height.
    std::unique_ptr<TextblockDrawer> makeBlock();

    /// What is left between two blocks: 1/100 of the drawer's width, in landscape half of that.
    float blockGap() const;

    std::vector<std::unique_ptr<TextblockDrawer>> mTextblocks;
    gui::FrameData mFrameData{0, {}};
    std::uint32_t mOrientation = 1;  ///< last answer of getOrientation()
    glm::vec4 mTextColor{1.0F, 1.0F, 1.0F, 0.5F};
    glm::vec4 mBackgroundColor{0.0F, 0.0F, 0.0F, 1.0F};
};

}  // namespace drawer
