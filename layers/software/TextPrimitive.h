#pragma once

#include "raster/SurfaceText.h"

namespace software {

class Surface;

/// A line of text.
class TextPrimitive : public raster::SurfaceText {
public:
    explicit TextPrimitive(Surface& surface);

    void drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                   char symbol) override;

private:
    Surface& mSurface;
};

}  // namespace software
