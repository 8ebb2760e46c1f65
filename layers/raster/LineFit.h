#pragma once

#include "raster/Geometry.h"

#include <glm/mat4x4.hpp>

namespace gui {
struct Glyph;
class GlyphAtlas;
}  // namespace gui

namespace raster {

/// The heights at which many letters of a font begin or end, in line units (a line is 2 high, its top at -1).
struct FontHeights {
    float capitals = 0.0F;   ///< top of the capitals
    float small = 0.0F;      ///< top of the small letters without ascender
    float base = 0.0F;       ///< base line
    float tolerance = 0.0F;  ///< how far round letters reach beyond these
    bool known = false;      ///< false when the font lacks the letters to measure
};

/// Measures the capital H and the small x.
FontHeights measureFont(const gui::GlyphAtlas& atlas);

/// Glyph boxes lie on this many steps a pixel: nobody sees the rounding, and it makes letters reuse the same
/// few pictures.
constexpr float GLYPH_STEPS = 64.0F;

/// Returns the box in surface pixels of a glyph's quad under the matrix (which maps to pixels without
/// rotation). Moves it vertically so that the heights above fall on whole pixel rows and all letters of a
/// line begin and end on the same rows.
Box fitGlyph(const FontHeights& font, const gui::Glyph& glyph, const glm::mat4& transform);

}  // namespace raster
