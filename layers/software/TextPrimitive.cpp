#include "software/TextPrimitive.h"

#include "gui/GlyphAtlas.h"
#include "raster/GlyphScaler.h"
#include "software/Surface.h"

namespace software {

TextPrimitive::TextPrimitive(Surface& surface) : SurfaceText(surface.shape()), mSurface(surface) {}

void TextPrimitive::drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                              char /*symbol*/) {
    mSurface.mRasterizer.drawGlyph(mSurface.mImage, mSurface.clip(),
                                   raster::texelsOf(glyph, gui::GlyphAtlas::getGlyphAtlas()),
                                   glyphBox(glyph, transform), makePaint(color),
                                   [this](int left, int end) { return firstColumn(left, end); });
}

}  // namespace software
