#pragma once

#include "Glyph.h"

#include <vector>

namespace fontgen {

/// Gives every glyph its place in the bitmap: glyphs with a given box get the place in it, the others are
/// packed around them. Leaves at least `gap` free texels between any two glyphs. The same boxes always get
/// the same places. Returns false, with undefined places, when the glyphs do not all fit.
bool packGlyphs(std::vector<Glyph>& glyphs, std::uint32_t gap);

}  // namespace fontgen
