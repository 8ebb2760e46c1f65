#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "raster/GlyphScaler.h"
#include "raster/LineFit.h"
#include "raster/SurfaceShape.h"

namespace gui {
struct Glyph;
}

namespace drawlist {

/// Pictures of glyphs in the sizes they are drawn in, coverage in 8 bits, in one square texture that also has
/// a solid texel. A picture that is there once is there until the texture is full; then it is emptied. Memory
/// is fixed by the surface.
class GlyphCache {
public:
    /// Texels that are not 0 at (SOLID, SOLID) and around.
    static constexpr int SOLID = 1;

    /// Of the texture, for the largest surfaces.
    static constexpr int LARGEST_SIDE = 2048;

    /// Where a picture lies in the texture and on the surface.
    struct Picture {
        int mU = 0;  ///< first texel
        int mV = 0;
        raster::PixelRect mPixels;  ///< on the surface; empty when nothing is to be seen
    };

    /// Rows that have changed, end exclusive.
    struct Rows {
        int mFirst = 0;
        int mEnd = 0;
    };

    GlyphCache();

    /// Before a drawing on a surface of this size. Empties the texture when it was full, and changes its side
    /// when the surface asks for another one.
    void begin(const raster::SurfaceShape& shape);

    /// The picture of the glyph in a box as raster::fitGlyph() gives it. Nothing to be seen when it is out of
    /// reach of any surface or there is no room for it any more.
    Picture find(char symbol, const gui::Glyph& glyph, const raster::Box& box);

    /// Whether a picture found no room in this drawing, which the next one can mend.
    bool isFull() const { return mIsFull; }

    /// How often the texture has been emptied: until it is again, pictures stay where they are.
    unsigned int emptied() const { return mEmptied; }

    /// Side of the texture in texels, a power of two; its texels, rows from top to bottom.
    int side() const { return mSide; }
    const std::uint8_t* texels() const { return mTexels.data(); }

    bool isChanged() const { return mChanged.mFirst < mChanged.mEnd; }

    /// The rows that have changed since the last call.
    Rows takeChanges();

    /// Everything counts as changed: the texture is a new one.
    void forget();

private:
    struct Entry {
        std::uint64_t mKey = 0;  ///< 0: free
        std::uint16_t mU = 0;
        std::uint16_t mV = 0;
        std::uint16_t mWidth = 0;
        std::uint16_t mHeight = 0;
        std::int16_t mLeft = 0;  ///< of the picture, from the box's first pixel
        std::int16_t mTop = 0;
    };

    void empty();
    bool draw(Entry& entry, const gui::Glyph& glyph, const raster::Box& box);
    bool place(Entry& entry);

    int mSide = 0;
    std::vector<std::uint8_t> mTexels;
    std::vector<Entry> mEntries;
    std::size_t mCount = 0;
    bool mIsFull = false;
    unsigned int mEmptied = 0;
    int mShelfTop = 0;  ///< pictures stand side by side on shelves
    int mShelfHeight = 0;
    int mShelfEnd = 0;
    Rows mChanged;
    raster::GlyphScaler mScaler;
};

}  // namespace drawlist
