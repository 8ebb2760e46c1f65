#pragma once

#include "Glyph.h"

#include <string>
#include <vector>

namespace fontgen {

/// Writes a grey PNG to look at: the bitmap, and below it two lines of text set with the glyphs' measures, at
/// full size and brought down to 17 pixels a line. Throws std::runtime_error when it cannot be written.
void writePreview(const std::vector<Glyph>& glyphs, const std::string& file);

}  // namespace fontgen
