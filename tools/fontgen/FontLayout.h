#pragma once

#include <cstdint>
#include <string_view>

namespace fontgen {

/// What the library and the layers count on in the embedded font, whatever face it is made from.

constexpr std::uint32_t BITMAP_WIDTH = 256;
constexpr std::uint32_t BITMAP_HEIGHT = 247;
constexpr std::uint32_t LINE_HEIGHT = 61;
/// Pixels from the top of the line to the baseline.
constexpr std::uint32_t BASELINE = 49;
/// Flat capitals stand this many pixels high on the baseline.
constexpr std::uint32_t CAPITAL_HEIGHT = 34;
/// Every digit moves the pen by this much, so that changing figures do not make a text jump.
constexpr std::uint32_t DIGIT_ADVANCE = 26;

/// The 72 characters of the font, in the order of their codes.
constexpr std::string_view CHARACTERS =
    " #%(),./0123456789:@ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

/// A glyph's box in the bitmap (texels) and in the line (pixels from the pen and from the line's top).
struct GlyphBox {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t xOffset = 0;
    std::uint32_t yOffset = 0;
    std::uint32_t xAdvance = 0;
};

/// A glyph whose whole record is given; the face's outline is fitted into it.
struct FixedGlyph {
    char code = 0;
    GlyphBox box;
};

// clang-format off
constexpr FixedGlyph FIXED_GLYPHS[] = {
    {' ', {250, 0, 1, 1, 0, 0, 26}},
    {'.', {249, 146, 5, 6, 3, 43, 12}},
    {'0', {99, 154, 22, 34, 2, 15, 26}},
    {'A', {184, 38, 30, 34, 0, 15, 29}},
    {'g', {53, 45, 21, 35, 2, 23, 26}},
    {'j', {30, 0, 11, 45, 0, 13, 12}},
};
// clang-format on

/// The square that stands for "@": a colour swatch as high as a capital, at the pen's position so that what
/// room its advance leaves lies before the word that follows.
constexpr std::uint32_t SWATCH_SIZE = 34;
constexpr std::uint32_t SWATCH_OFFSET = 0;
constexpr std::uint32_t SWATCH_ADVANCE = 36;

/// The given box of a character, null for one whose box follows from the face.
inline const GlyphBox* fixedBox(char code) {
    for (const FixedGlyph& glyph : FIXED_GLYPHS) {
        if (glyph.code == code) {
            return &glyph.box;
        }
    }
    return nullptr;
}

}  // namespace fontgen
