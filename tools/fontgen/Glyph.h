#pragma once

#include "FontLayout.h"

#include <cstdint>
#include <vector>

namespace fontgen {

/// A character's picture and measures. The packer sets its position (x, y) in the bitmap.
struct Glyph {
    char code = 0;
    GlyphBox box;
    /// Coverage, 0 to 255, box.width bytes a row, rows from top to bottom.
    std::vector<std::uint8_t> coverage;
};

}  // namespace fontgen
