#pragma once

#include "drawers/Drawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "utils/Export.h"

#include <glm/vec4.hpp>

#include <memory>

namespace drawer {

/// The caption of the render-pass widgets: number and duration of the frame on the left, on the right a
/// legend of two texts over each other, of which the second covers the end of the first in a colour of its
/// own. The colours are the layer's.
class KORDANIX_EXPORT RenderPassInfoDrawer : public Drawer {
public:
    RenderPassInfoDrawer(std::unique_ptr<TextDrawer> frameText, std::unique_ptr<TextDrawer> vertexLegend,
                         std::unique_ptr<TextDrawer> fragmentLegend, std::unique_ptr<RectDrawer> background);

    /// Releases the background first and the frame line last, as the order of the members makes it.
    ~RenderPassInfoDrawer() override;

    /// Background, then texts.
    void draw() override;

    /// Not 0 in landscape, 0 in portrait. Supplied by the layer.
    virtual unsigned int getOrientation() = 0;

    /// The duration is milliseconds.
    void setFrameIdAndDuration(unsigned int frameId, long double duration);

    void drawBackground();

    /// The texts, which do not move with mTranslation.
    void drawText();

    /// The rectangle of the texts (x, y, width, height) in canvas fractions: the drawer's without a margin on
    /// the left and right that depends on the orientation.
    glm::vec4 getTextDrawnArea();

    std::unique_ptr<TextDrawer> mFrameText;
    std::unique_ptr<TextDrawer> mVertexLegend;
    std::unique_ptr<TextDrawer> mFragmentLegend;
    std::unique_ptr<RectDrawer> mBackground;
};

}  // namespace drawer
