#pragma once

#include "Glyph.h"

#include <cstdint>
#include <vector>

namespace fontgen {

/// Draws only the bitmap: one coverage byte a texel, BITMAP_WIDTH bytes a row, every glyph at its place.
std::vector<std::uint8_t> drawBitmap(const std::vector<Glyph>& glyphs);

/// Returns the font as the library embeds it: header, glyph records in the given order, bitmap. Every integer
/// has 32 bits, little-endian.
std::vector<std::uint8_t> writeFontRecord(const std::vector<Glyph>& glyphs);

}  // namespace fontgen
