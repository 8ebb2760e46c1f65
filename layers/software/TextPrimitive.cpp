#include "software/TextPrimitive.h"

#include "gui/GlyphAtlas.h"
#include "software/LineFit.h"
#include "software/Surface.h"

#include <cmath>

namespace software {

namespace {

/// The texels between the quad's first and last corner, cut to the bitmap.
TexelRect texelsOf(const gui::Glyph& glyph, const gui::GlyphAtlas& atlas) {
    const auto width = static_cast<int>(atlas.mBitmapWidth);
    const auto height = static_cast<int>(atlas.mBitmapHeight);
    const glm::vec2& from = glyph.mQuad[0].mTexCoord;
    const glm::vec2& to = glyph.mQuad[3].mTexCoord;
    const auto texel = [](float fraction, int size) {
        return toInt(std::round(fraction * static_cast<float>(size)), 0, size);
    };
    const int left = texel(from.x, width);
    const int top = texel(from.y, height);
    TexelRect texels;
    texels.mWidth = texel(to.x, width) - left;
    texels.mHeight = texel(to.y, height) - top;
    texels.mStride = atlas.mBitmapWidth;
    if (texels.mWidth > 0 && texels.mHeight > 0) {
        texels.mFirst = atlas.mBitmap + static_cast<std::size_t>(top) * texels.mStride + left;
    }
    return texels;
}

}  // namespace

void TextPrimitive::drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                              char /*symbol*/) {
    const gui::GlyphAtlas& atlas = gui::GlyphAtlas::getGlyphAtlas();
    static const FontHeights FONT = measureFont(atlas);
    mSurface.mRasterizer.drawTexels(mSurface.mImage, mSurface.clip(), texelsOf(glyph, atlas),
                                    fitGlyph(FONT, glyph, transform), makePaint(color));
}

glm::mat4 TextPrimitive::getTransform(const glm::vec2& size, const glm::vec2& position,
                                      const glm::vec3& translation) {
    const Box box = mSurface.toPixels(position, size, translation);
    glm::mat4 transform(1.0F);
    transform[0][0] = 0.5F * (box.mRight - box.mLeft);
    transform[1][1] = 0.5F * (box.mBottom - box.mTop);
    transform[3] = {0.5F * (box.mLeft + box.mRight), 0.5F * (box.mTop + box.mBottom), translation.z, 1.0F};
    return transform;
}

float TextPrimitive::getAspectRatio() {
    return mSurface.aspectRatio();
}

float TextPrimitive::getScreenHeight() {
    return static_cast<float>(mSurface.mImage.mHeight);
}

}  // namespace software
