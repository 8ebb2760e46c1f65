#pragma once

#include "utils/Export.h"

#include <cstdint>
#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <map>

namespace gui {

/// A corner of a glyph's quad.
struct GlyphVertex {
    glm::vec2 mPosition;  ///< (-1, -1) is the quad's top-left corner, (1, 1) its bottom-right corner
    glm::vec2 mTexCoord;  ///< (0, 0) is the bitmap's first byte, (1, 1) the end of its last row
};

static_assert(sizeof(GlyphVertex) == 16, "layers upload quads as they are");

/// One drawable glyph. Lengths are line units, in which a line of text is 2 high.
struct Glyph {
    glm::mat4 mTransform;  ///< places the quad in a line whose top is y = -1, with the pen at x = -1
    float mAdvance;        ///< how far the pen moves
    GlyphVertex mQuad[4];  ///< a triangle strip: top left, top right, bottom left, bottom right
};

/// The library's font: the glyphs of an embedded bitmap. Immutable, so any thread may look up glyphs.
class KORDANIX_EXPORT GlyphAtlas {
public:
    /// Returns the process's atlas; the first call, from any thread, makes it.
    static GlyphAtlas& getGlyphAtlas();

    /// Reads a font record: five 32-bit little-endian numbers (number of glyphs, bitmap width and height in
    /// texels, line height and baseline in pixels), eight more for each glyph (code, x, y, width, height, x
    /// offset, y offset, advance) and the bitmap. All numbers are unsigned. Trusts the record to be complete.
    /// The record must outlive the atlas, which uses the bitmap in place.
    explicit GlyphAtlas(const unsigned char* record);
    ~GlyphAtlas();
    GlyphAtlas(const GlyphAtlas&) = delete;
    GlyphAtlas& operator=(const GlyphAtlas&) = delete;

    /// Returns the glyph's advance; when the font has no such character, logs an error and returns 0.
    float getGlyphWidth(char symbol) const;

    /// Returns the glyph; when the font has no such character, logs an error and returns null.
    const Glyph* operator[](char symbol) const;

    /// Orders characters as unsigned bytes, even where `char` is signed.
    struct UnsignedLess {
        bool operator()(char left, char right) const {
            return static_cast<unsigned char>(left) < static_cast<unsigned char>(right);
        }
    };

    std::map<char, Glyph*, UnsignedLess> mGlyphs;  ///< owned
    const unsigned char* mBitmap;                  ///< coverage, a byte a texel, rows from top to bottom
    std::uint32_t mBitmapWidth;                    ///< texels, and bytes of a row
    std::uint32_t mBitmapHeight;
};

}  // namespace gui
