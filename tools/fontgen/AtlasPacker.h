#pragma once

#include "Glyph.h"

#include <vector>

namespace fontgen {

/// Gives every glyph its place in the bitmap: those with a given box stand where it says, the others are
/// packed around them. At least `gap` free texels lie between any two glyphs. The same boxes always get the
/// same places. Returns false, with the places undefined, when they do not all fit.
bool packGlyphs(std::vector<Glyph>& glyphs, std::uint32_t gap);

}  // namespace fontgen
