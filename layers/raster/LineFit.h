#pragma once

#include "raster/Geometry.h"

#include <glm/mat4x4.hpp>

namespace gui {
struct Glyph;
class GlyphAtlas;
}  // namespace gui

namespace raster {

/// Heights at which many letters of a font begin or end, in line units (a line is 2 high, its top at -1).
struct FontHeights {
    float mCapitals = 0.0F;   ///< top of the capitals
    float mSmall = 0.0F;      ///< top of the small letters without ascender
    float mBase = 0.0F;       ///< base line
    float mTolerance = 0.0F;  ///< how far round letters reach beyond these
    bool mKnown = false;      ///< false when the font lacks the letters they are measured on
};

/// Measures the capital H and the small x.
FontHeights measureFont(const gui::GlyphAtlas& atlas);

/// The boxes of glyphs lie on this many steps a pixel: finer than anybody sees, and coarse enough that the
/// same few pictures of a letter come back again and again.
constexpr float GLYPH_STEPS = 64.0F;

/// The box in surface pixels that a glyph's quad fills when drawn through the matrix (which maps to pixels
/// without rotation), moved vertically so that the heights above fall on whole pixel rows and all letters
/// of a line stand on one row and reach to one row.
Box fitGlyph(const FontHeights& font, const gui::Glyph& glyph, const glm::mat4& transform);

}  // namespace raster
