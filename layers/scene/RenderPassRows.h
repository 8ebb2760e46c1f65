#pragma once

#include "drawers/AnimatedRenderPassDrawer.h"
#include "drawers/FixedRenderPassDrawer.h"
#include "drawers/RenderPassInfoDrawer.h"
#include "scene/PrimitiveFactory.h"

#include <memory>

namespace scene {

struct Canvas;

/// The layer's part of the library's render-pass drawers: the blocks, the orientation and the clip.

/// The frame's passes in a row of cells that slides while the frame is shown, clipped to the drawer's
/// rectangle.
class PassCellsRow : public drawer::AnimatedRenderPassDrawer {
public:
    explicit PassCellsRow(PrimitiveFactory& factory);

    std::unique_ptr<drawer::TextblockDrawer> createTextblockDrawer(unsigned int lineCount,
                                                                   unsigned int textSizeHint) override;
    unsigned int getOrientation() override;
    void onPreDrawWidgets() override;
    void onPostDrawWidgets() override;

private:
    PrimitiveFactory& mFactory;
};

/// The frame's passes on a time line.
class PassTimeline : public drawer::FixedRenderPassDrawer {
public:
    explicit PassTimeline(PrimitiveFactory& factory);

    std::unique_ptr<drawer::TextblockDrawer> createTextblockDrawer(unsigned int lineCount,
                                                                   unsigned int textSizeHint) override;
    unsigned int getOrientation() override;

private:
    PrimitiveFactory& mFactory;
};

/// The frame's number and length and the legend of the shader stages.
class PassCaption : public drawer::RenderPassInfoDrawer {
public:
    explicit PassCaption(PrimitiveFactory& factory);

    unsigned int getOrientation() override;

    /// Makes the texts small enough to fit side by side: on a narrow surface each would fill the row.
    void fitTexts(const Canvas& canvas);
};

/// Creates a block of text lines from the factory's primitives.
std::unique_ptr<drawer::TextblockDrawer> createTextblock(PrimitiveFactory& factory, unsigned int lineCount,
                                                         unsigned int textSizeHint);

}  // namespace scene
