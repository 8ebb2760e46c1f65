#pragma once

#include "drawers/TextDrawer.h"
#include "raster/Geometry.h"
#include "raster/SurfaceShape.h"

namespace raster {

/// A line of text that thinks in the pixels of its surface, whose shape outlives it. Glyphs are moved and
/// scaled by a fraction of a pixel vertically, so that base line and tops of the letters fall on whole rows;
/// horizontally they keep their exact place.
class SurfaceText : public drawer::TextDrawer {
public:
    explicit SurfaceText(const SurfaceShape& shape) : mShape(shape) {}

    /// From local coordinates to pixels, y downwards.
    glm::mat4 getTransform(const glm::vec2& size, const glm::vec2& position,
                           const glm::vec3& translation) override;
    float getAspectRatio() override;
    float getScreenHeight() override;

protected:
    /// The pixels of a glyph that is drawn through the matrix.
    static Box glyphBox(const gui::Glyph& glyph, const glm::mat4& transform);

private:
    const SurfaceShape& mShape;
};

}  // namespace raster
