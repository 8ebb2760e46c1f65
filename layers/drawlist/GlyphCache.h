#pragma once

#include "raster/LineFit.h"
#include "raster/OutlinedGlyph.h"
#include "raster/SurfaceShape.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace gui {
struct Glyph;
}

namespace drawlist {

/// What of a glyph or of a stroke.
enum class Part : std::uint8_t {
    BOTH,     ///< the ink on a black outline
    OUTLINE,  ///< only the outline, of the vertices' colour
    INK
};

/// Pictures of glyphs in the sizes they are drawn in, in one square texture that also has a solid texel and
/// the profiles of strokes. A texel is two bytes: how much of it is ink, and how much it covers. What is
/// drawn is the vertices' colour with red, green and blue times the first and alpha times the second: the
/// outline is black. A picture that is there once is there until the texture is full; then it is emptied.
/// Memory is fixed by the surface.
class GlyphCache {
public:
    /// Texels that are not 0 at (SOLID, SOLID) and around.
    static constexpr int SOLID = 1;

    /// Bytes of a texel.
    static constexpr int CHANNELS = 2;

    /// A profile goes across a stroke as wide as the surface's lines, from `reach` pixels on one side of its
    /// middle to as many on the other: for uv of the vertices.
    static std::uint16_t acrossProfile(float share) {
        constexpr float ROUNDING = 0.5F;
        return static_cast<std::uint16_t>(PROFILE_START + share * PROFILE_LENGTH + ROUNDING);
    }
    static std::uint16_t profile(Part part) {
        return static_cast<std::uint16_t>(1 + 2 * static_cast<int>(part));
    }
    static float reach(float lineWidth, Part part);

    /// Of the texture, for the largest surfaces.
    static constexpr int LARGEST_SIDE = 2048;

    /// Where a picture lies in the texture and on the surface.
    struct Picture {
        int u = 0;  ///< first texel
        int v = 0;
        raster::PixelRect pixels;  ///< on the surface, with the outline; empty when nothing is to be seen
    };

    /// Rows that have changed, end exclusive.
    struct Rows {
        int first = 0;
        int end = 0;
    };

    GlyphCache();

    /// Before a drawing on a surface of this size. Empties the texture when it was full, and changes its side
    /// when the surface asks for another one.
    void begin(const raster::SurfaceShape& shape);

    /// The picture of the glyph in a box as raster::fitGlyph() gives it. Nothing to be seen when it is out of
    /// reach of any surface or there is no room for it any more.
    Picture find(char symbol, const gui::Glyph& glyph, const raster::Box& box, Part part);

    /// Whether a picture found no room in this drawing, which the next one can mend.
    bool isFull() const { return mIsFull; }

    /// How often the texture has been emptied: until it is again, pictures stay where they are.
    unsigned int emptied() const { return mEmptied; }

    /// Side of the texture in texels, a power of two; its texels, rows from top to bottom.
    int side() const { return mSide; }
    const std::uint8_t* texels() const { return row(0); }
    const std::uint8_t* row(int v) const {
        return mTexels.data() + static_cast<std::ptrdiff_t>(v) * mSide * CHANNELS;
    }

    bool isChanged() const { return mChanged.first < mChanged.end; }

    /// The rows that have changed since the last call.
    Rows takeChanges();

    /// Everything counts as changed: the texture is a new one.
    void forget();

private:
    static constexpr int PROFILE_START = 8;
    static constexpr int PROFILE_LENGTH = 128;

    struct Entry {
        std::uint64_t key = 0;  ///< 0: free
        std::uint16_t u = 0;
        std::uint16_t v = 0;
        std::uint16_t width = 0;
        std::uint16_t height = 0;
        std::int16_t left = 0;  ///< of the picture, from the box's first pixel
        std::int16_t top = 0;
    };

    void empty();
    void drawProfiles();
    bool draw(Entry& entry, const gui::Glyph& glyph, const raster::Box& box, Part part);
    std::uint8_t* texel(int u, int v) {
        return mTexels.data() + (static_cast<std::ptrdiff_t>(v) * mSide + u) * CHANNELS;
    }
    bool place(Entry& entry);

    int mSide = 0;
    float mLineWidth = 0.0F;
    std::vector<std::uint8_t> mTexels;
    std::vector<Entry> mEntries;
    std::size_t mCount = 0;
    bool mIsFull = false;
    unsigned int mEmptied = 0;
    int mShelfTop = 0;  ///< pictures stand side by side on shelves
    int mShelfHeight = 0;
    int mShelfEnd = 0;
    Rows mChanged;
    raster::OutlinedGlyph mGlyph;
};

}  // namespace drawlist
