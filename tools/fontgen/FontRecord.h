#pragma once

#include "Glyph.h"

#include <cstdint>
#include <vector>

namespace fontgen {

/// The bitmap alone: one coverage byte a texel, BITMAP_WIDTH a row, every glyph at its place.
std::vector<std::uint8_t> drawBitmap(const std::vector<Glyph>& glyphs);

/// The font as the library embeds it: header, glyph records in the order given, bitmap; every integer 32
/// bits, little-endian.
std::vector<std::uint8_t> writeFontRecord(const std::vector<Glyph>& glyphs);

}  // namespace fontgen
