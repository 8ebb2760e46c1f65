#pragma once

#include "drawers/TextDrawer.h"
#include "raster/Geometry.h"
#include "raster/SurfaceShape.h"

namespace raster {

/// A line of text that thinks in the pixels of its surface, whose shape outlives it. Glyphs are moved and
/// scaled by a fraction of a pixel vertically, so that base line and tops of the letters fall on whole rows;
/// horizontally they keep their exact place. Around them lies an outline; what a layer draws of a line, it
/// draws from left to right.
class SurfaceText : public drawer::TextDrawer {
public:
    explicit SurfaceText(const SurfaceShape& shape) : mShape(shape) {}

    /// From local coordinates to pixels, y downwards.
    glm::mat4 getTransform(const glm::vec2& size, const glm::vec2& position,
                           const glm::vec3& translation) override;
    float getAspectRatio() override;
    float getScreenHeight() override;

    void draw() override;

protected:
    /// The pixels of a glyph that is drawn through the matrix.
    static Box glyphBox(const gui::Glyph& glyph, const glm::mat4& transform);

    /// The first column of the line's next glyph that is drawn, when the glyph itself touches the columns
    /// left..end: its outline, a column further to the left, must not lie on the glyph before.
    int firstColumn(int left, int end) {
        const int first = left - 1 < mLineEnd ? left : left - 1;
        mLineEnd = end;
        return first;
    }

private:
    const SurfaceShape& mShape;
    int mLineEnd = 0;  ///< of the columns that the glyphs so far touch
};

}  // namespace raster
