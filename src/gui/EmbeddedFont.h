#pragma once

namespace gui {

/// The font record compiled into the library (assets/font.bin), in the form that GlyphAtlas reads.
const unsigned char* embeddedFont();

}  // namespace gui
