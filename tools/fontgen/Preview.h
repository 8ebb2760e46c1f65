#pragma once

#include "Glyph.h"

#include <string>
#include <vector>

namespace fontgen {

/// Writes a grey PNG for people: the bitmap, and below it two lines of text set with the glyphs' measures, at
/// full size and reduced to 17 pixels a line. Throws std::runtime_error when it cannot write the file.
void writePreview(const std::vector<Glyph>& glyphs, const std::string& file);

}  // namespace fontgen
