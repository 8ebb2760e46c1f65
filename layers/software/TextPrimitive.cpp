#include "software/TextPrimitive.h"

#include "gui/GlyphAtlas.h"
#include "raster/GlyphScaler.h"
#include "raster/LineFit.h"
#include "software/Surface.h"

namespace software {

void TextPrimitive::drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                              char /*symbol*/) {
    const gui::GlyphAtlas& atlas = gui::GlyphAtlas::getGlyphAtlas();
    static const raster::FontHeights FONT = raster::measureFont(atlas);
    mSurface.mRasterizer.drawTexels(mSurface.mImage, mSurface.clip(), raster::texelsOf(glyph, atlas),
                                    raster::fitGlyph(FONT, glyph, transform), makePaint(color));
}

glm::mat4 TextPrimitive::getTransform(const glm::vec2& size, const glm::vec2& position,
                                      const glm::vec3& translation) {
    return mSurface.shape().localToPixels(position, size, translation);
}

float TextPrimitive::getAspectRatio() {
    return mSurface.shape().aspectRatio();
}

float TextPrimitive::getScreenHeight() {
    return static_cast<float>(mSurface.mImage.mHeight);
}

}  // namespace software
