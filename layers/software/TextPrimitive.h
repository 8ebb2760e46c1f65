#pragma once

#include "drawers/TextDrawer.h"

namespace software {

class Surface;

/// One line of text. Its transform maps local coordinates to surface pixels, y downwards. Glyphs are
/// moved and scaled by a fraction of a pixel vertically, so that base line and top of the letters fall on
/// whole pixel rows; horizontally they keep their exact place.
class TextPrimitive : public drawer::TextDrawer {
public:
    explicit TextPrimitive(Surface& surface) : mSurface(surface) {}

    void drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                   char symbol) override;
    glm::mat4 getTransform(const glm::vec2& size, const glm::vec2& position,
                           const glm::vec3& translation) override;
    float getAspectRatio() override;
    float getScreenHeight() override;

private:
    Surface& mSurface;
};

}  // namespace software
