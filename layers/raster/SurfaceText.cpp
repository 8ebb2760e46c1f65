#include "raster/SurfaceText.h"

#include "gui/GlyphAtlas.h"
#include "raster/LineFit.h"

#include <limits>

namespace raster {

glm::mat4 SurfaceText::getTransform(const glm::vec2& size, const glm::vec2& position,
                                    const glm::vec3& translation) {
    return mShape.localToPixels(position, size, translation);
}

float SurfaceText::getAspectRatio() {
    return mShape.aspectRatio();
}

float SurfaceText::getScreenHeight() {
    return static_cast<float>(mShape.height);
}

void SurfaceText::draw() {
    mLineEnd = std::numeric_limits<int>::min();
    TextDrawer::draw();
}

Box SurfaceText::glyphBox(const gui::Glyph& glyph, const glm::mat4& transform) {
    static const FontHeights FONT = measureFont(gui::GlyphAtlas::getGlyphAtlas());
    return fitGlyph(FONT, glyph, transform);
}

}  // namespace raster
