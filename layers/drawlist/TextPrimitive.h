#pragma once

#include "drawlist/Paint.h"
#include "drawlist/RetainedRange.h"
#include "raster/SurfaceText.h"

#include <cstdint>
#include <string>

namespace drawlist {

/// A line of text: a rectangle of the glyph texture for each glyph, or two, of the outline and of the ink,
/// when the outline is not black.
class TextPrimitive : public raster::SurfaceText {
public:
    explicit TextPrimitive(DrawList& list) : SurfaceText(list.shape), mList(list) {}
    void draw() override;
    void drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                   char symbol) override;

private:
    DrawList& mList;
    RetainedRange mRetained;
    raster::PixelRect mBounds;  ///< of the glyphs so far
    std::string mLastText;
    std::uint32_t mLastSizeHint = 0;
    gui::TextEllipsize mLastEllipsize = gui::TextEllipsize::NONE;
    gui::TextGravity mLastGravity = gui::TextGravity::LEFT;
    glm::vec4 mPaintColor{-1.0F};  ///< of mPaint, which the glyphs of a line have in common
    Paint mPaint{glm::vec4(0.0F)};
    Paint mOutline{glm::vec4(0.0F)};
    bool mIsDark = false;
};

}  // namespace drawlist
