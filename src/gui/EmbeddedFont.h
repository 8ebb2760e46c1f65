#pragma once

namespace gui {

/// Returns the font record compiled into the library (assets/font.bin), in the format that GlyphAtlas reads.
const unsigned char* embeddedFont();

}  // namespace gui
