#pragma once

#include "drawers/Drawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "utils/Export.h"

#include <glm/vec4.hpp>
#include <memory>

namespace drawer {

/// The caption of the render-pass widgets: the frame's number and duration on the left, a legend on the
/// right. The legend is two texts on top of each other; the second, in its own colour, covers the end of the
/// first. The layer sets the colours.
class KORDANIX_EXPORT RenderPassInfoDrawer : public Drawer {
public:
    RenderPassInfoDrawer(std::unique_ptr<TextDrawer> frameText, std::unique_ptr<TextDrawer> vertexLegend,
                         std::unique_ptr<TextDrawer> fragmentLegend, std::unique_ptr<RectDrawer> background);

    /// Releases the background first and the frame line last: the order of the members ensures it.
    ~RenderPassInfoDrawer() override;

    /// Draws the background, then the texts.
    void draw() override;

    /// 0 in portrait, anything else in landscape. The layer supplies it.
    virtual unsigned int getOrientation() = 0;

    /// Takes the duration in milliseconds.
    void setFrameIdAndDuration(unsigned int frameId, long double duration);

    void drawBackground();

    /// Draws the texts, which ignore mTranslation.
    void drawText();

    /// The rectangle of the texts (x, y, width, height) in canvas fractions: the drawer's, less a margin on
    /// the left and on the right that depends on the orientation.
    glm::vec4 getTextDrawnArea();

    std::unique_ptr<TextDrawer> mFrameText;
    std::unique_ptr<TextDrawer> mVertexLegend;
    std::unique_ptr<TextDrawer> mFragmentLegend;
    std::unique_ptr<RectDrawer> mBackground;
};

}  // namespace drawer
