#pragma once

#include <cstdint>
#include <string_view>

namespace fontgen {

/// What the library and the layers rely on in the embedded font, whatever face it comes from.

constexpr std::uint32_t BITMAP_WIDTH = 256;
constexpr std::uint32_t BITMAP_HEIGHT = 247;
constexpr std::uint32_t LINE_HEIGHT = 61;
/// Pixels from the top of the line to the baseline.
constexpr std::uint32_t BASELINE = 49;
/// The height in pixels of flat capitals above the baseline.
constexpr std::uint32_t CAPITAL_HEIGHT = 34;
/// The advance of every digit, so that a text does not jump when its figures change.
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

/// A glyph with a given record; the face's outline is fitted into it.
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

/// The square for "@": a colour swatch as high as a capital. It begins at the pen, so that the rest of its
/// advance is a gap before the next word.
constexpr std::uint32_t SWATCH_SIZE = 34;
constexpr std::uint32_t SWATCH_OFFSET = 0;
constexpr std::uint32_t SWATCH_ADVANCE = 36;

/// The given box of a character; null when the face determines the box.
inline const GlyphBox* fixedBox(char code) {
    for (const FixedGlyph& glyph : FIXED_GLYPHS) {
        if (glyph.code == code) {
            return &glyph.box;
        }
    }
    return nullptr;
}

}  // namespace fontgen
