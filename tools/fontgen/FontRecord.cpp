#include "FontRecord.h"

#include <algorithm>

namespace fontgen {
namespace {

void append(std::vector<std::uint8_t>& bytes, std::uint32_t value) {
    for (unsigned int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

}  // namespace

std::vector<std::uint8_t> drawBitmap(const std::vector<Glyph>& glyphs) {
    std::vector<std::uint8_t> bitmap(std::size_t{BITMAP_WIDTH} * BITMAP_HEIGHT, 0);
    for (const Glyph& glyph : glyphs) {
        for (std::uint32_t row = 0; row < glyph.box.height; ++row) {
            std::copy_n(&glyph.coverage[std::size_t{row} * glyph.box.width], glyph.box.width,
                        &bitmap[std::size_t{glyph.box.y + row} * BITMAP_WIDTH + glyph.box.x]);
        }
    }
    return bitmap;
}

std::vector<std::uint8_t> writeFontRecord(const std::vector<Glyph>& glyphs) {
    std::vector<std::uint8_t> bytes;
    for (const std::uint32_t field :
         {static_cast<std::uint32_t>(glyphs.size()), BITMAP_WIDTH, BITMAP_HEIGHT, LINE_HEIGHT, BASELINE}) {
        append(bytes, field);
    }
    for (const Glyph& glyph : glyphs) {
        const GlyphBox& box = glyph.box;
        for (const std::uint32_t field : {std::uint32_t{static_cast<unsigned char>(glyph.code)}, box.x, box.y,
                                          box.width, box.height, box.xOffset, box.yOffset, box.xAdvance}) {
            append(bytes, field);
        }
    }
    const std::vector<std::uint8_t> bitmap = drawBitmap(glyphs);
    bytes.insert(bytes.end(), bitmap.begin(), bitmap.end());
    return bytes;
}

}  // namespace fontgen
