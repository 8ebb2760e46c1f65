#include "drawlist/GlyphCache.h"

#include "gui/GlyphAtlas.h"
#include "raster/Outline.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace drawlist {

namespace {

constexpr std::uint8_t FULL = 255;
constexpr float HALF = 0.5F;

/// Texels of the solid corner, in both directions.
constexpr int SOLID_SIDE = 4;

/// Texels of the profiles of strokes and the solid corner, from the top.
constexpr int PROFILE_ROWS = 8;

constexpr int SMALLEST_SIDE = 256;

/// A power of two. At most half of the entries are used, so that a search is short.
constexpr std::size_t ENTRIES = 4096;

constexpr int STEPS = static_cast<int>(raster::GLYPH_STEPS);

/// Glyphs of more pixels than this, or farther away, are on no surface.
constexpr int LONGEST_SIDE = 1024;
constexpr float FARTHEST = 65536.0F;

/// Room for the pictures of all letters and for digits in many places.
int sideFor(const raster::SurfaceShape& shape) {
    const std::uint32_t wanted = std::min(shape.width, shape.height) / 2;
    int side = SMALLEST_SIDE;
    while (side < GlyphCache::LARGEST_SIDE && static_cast<std::uint32_t>(side) < wanted) {
        side *= 2;
    }
    return side;
}

int toSteps(float position) {
    return static_cast<int>(position * raster::GLYPH_STEPS + (position < 0.0F ? -HALF : HALF));
}

/// A texel of ink on its outline.
void write(std::uint8_t* texel, float ink, float outline, Part part) {
    const auto toByte = [](float share) { return static_cast<std::uint8_t>(share * FULL + HALF); };
    const raster::Outlined both(ink, outline);
    texel[0] = part == Part::BOTH ? toByte(both.ink) : FULL;
    texel[1] = toByte(part == Part::BOTH ? both.cover : part == Part::INK ? ink : outline);
}

std::size_t hash(std::uint64_t key) {
    constexpr std::uint64_t MULTIPLIER = 0x9E3779B97F4A7C15U;
    constexpr int SHIFT = 40;
    return static_cast<std::size_t>((key * MULTIPLIER) >> SHIFT);
}

}  // namespace

float GlyphCache::reach(float lineWidth, Part part) {
    constexpr float SOFT = 0.5F;  // coverage falls over a pixel around the border
    return 0.5F * lineWidth + (part == Part::INK ? 0.0F : raster::OUTLINE_WIDTH) + SOFT;
}

GlyphCache::GlyphCache() : mEntries(ENTRIES) {}

void GlyphCache::begin(const raster::SurfaceShape& shape) {
    const int side = sideFor(shape);
    const float lineWidth = shape.lineWidth();
    if (side == mSide && lineWidth == mLineWidth && !mIsFull) {
        return;
    }
    mLineWidth = lineWidth;
    if (side != mSide) {
        mSide = side;
        mTexels.assign(static_cast<std::size_t>(side) * static_cast<std::size_t>(side) * CHANNELS, 0);
    }
    empty();
}

void GlyphCache::empty() {
    std::fill(mEntries.begin(), mEntries.end(), Entry());
    mCount = 0;
    mIsFull = false;
    ++mEmptied;
    for (int row = 0; row < SOLID_SIDE; ++row) {
        std::memset(texel(0, row), FULL, SOLID_SIDE * CHANNELS);
    }
    drawProfiles();
    mShelfTop = 0;
    mShelfHeight = PROFILE_ROWS;
    mShelfEnd = mSide;
    forget();
}

void GlyphCache::drawProfiles() {
    for (const Part part : {Part::BOTH, Part::OUTLINE, Part::INK}) {
        const float longest = reach(mLineWidth, part);
        const float inset = part == Part::INK ? 0.0F : raster::OUTLINE_WIDTH;
        const int middle = profile(part);  // between two rows that are alike
        for (int i = 0; i < PROFILE_LENGTH; ++i) {
            const float place = (static_cast<float>(i) + HALF) / PROFILE_LENGTH;
            const float inside = longest - std::fabs(2.0F * place - 1.0F) * longest;
            const float ink = std::clamp(inside - inset, 0.0F, 1.0F);
            for (const int row : {middle - 1, middle}) {
                write(texel(PROFILE_START + i, row), ink, std::min(inside, 1.0F), part);
            }
        }
    }
}

void GlyphCache::forget() {
    mChanged = {0, mSide};
}

GlyphCache::Rows GlyphCache::takeChanges() {
    const Rows changed = mChanged;
    mChanged = {};
    return changed;
}

GlyphCache::Picture GlyphCache::find(char symbol, const gui::Glyph& glyph, const raster::Box& box,
                                     Part part) {
    if (!(std::fabs(box.left) < FARTHEST) || !(std::fabs(box.top) < FARTHEST) ||
        !(box.right - box.left < LONGEST_SIDE) || !(box.bottom - box.top < LONGEST_SIDE) || mSide == 0) {
        return {};
    }
    const int left = toSteps(box.left);
    const int top = toSteps(box.top);
    const int width = toSteps(box.right) - left;
    const int height = toSteps(box.bottom) - top;
    if (width <= 0 || height <= 0) {
        return {};
    }
    // Steps are divided towards minus infinity: a box can begin left of the surface.
    const int column = (left & ~(STEPS - 1)) / STEPS;
    const int row = (top & ~(STEPS - 1)) / STEPS;
    const auto phaseX = static_cast<std::uint64_t>(left & (STEPS - 1));
    const auto phaseY = static_cast<std::uint64_t>(top & (STEPS - 1));
    const std::uint64_t key = std::uint64_t{static_cast<unsigned char>(symbol)} << 56 | phaseX << 50 |
                              phaseY << 44 | static_cast<std::uint64_t>(part) << 42 |
                              static_cast<std::uint64_t>(width) << 20 | static_cast<std::uint64_t>(height);
    std::size_t index = hash(key) % ENTRIES;
    while (mEntries[index].key != 0 && mEntries[index].key != key) {
        index = (index + 1) % ENTRIES;
    }
    Entry& entry = mEntries[index];
    if (entry.key == 0) {
        const auto toPixels = [](std::uint64_t steps) {
            return static_cast<float>(steps) / raster::GLYPH_STEPS;
        };
        const float boxLeft = toPixels(phaseX);
        const float boxTop = toPixels(phaseY);
        const raster::Box local{boxLeft, boxTop, boxLeft + toPixels(static_cast<std::uint64_t>(width)),
                                boxTop + toPixels(static_cast<std::uint64_t>(height))};
        if (mCount >= ENTRIES / 2 || !draw(entry, glyph, local, part)) {
            mIsFull = true;
            return {};
        }
        entry.key = key;
        ++mCount;
    }
    return {entry.u,
            entry.v,
            {column + entry.left, row + entry.top, column + entry.left + entry.width,
             row + entry.top + entry.height}};
}

bool GlyphCache::draw(Entry& entry, const gui::Glyph& glyph, const raster::Box& box, Part part) {
    constexpr raster::PixelRect LIMITS{-LONGEST_SIDE, -LONGEST_SIDE, 2 * LONGEST_SIDE, 2 * LONGEST_SIDE};
    entry = {};
    if (!mGlyph.prepare(raster::texelsOf(glyph, gui::GlyphAtlas::getGlyphAtlas()), box, LIMITS)) {
        return true;  // a space
    }
    const raster::PixelRect pixels = mGlyph.pixels();
    entry.width = static_cast<std::uint16_t>(pixels.width());
    entry.height = static_cast<std::uint16_t>(pixels.height());
    entry.left = static_cast<std::int16_t>(pixels.left);
    entry.top = static_cast<std::int16_t>(pixels.top);
    if (!place(entry)) {
        return false;
    }
    for (int y = 0; y < pixels.height(); ++y) {
        const float* const ink = mGlyph.ink(pixels.top + y);
        const float* const outline = mGlyph.outline(pixels.top + y);
        for (int x = 0; x < pixels.width(); ++x) {
            write(texel(entry.u + x, entry.v + y), ink[x], outline[x], part);
        }
    }
    return true;
}

bool GlyphCache::place(Entry& entry) {
    if (mShelfEnd + entry.width > mSide) {
        mShelfTop += mShelfHeight;
        mShelfHeight = 0;
        mShelfEnd = 0;
    }
    if (entry.width > mSide || mShelfTop + entry.height > mSide) {
        return false;
    }
    entry.u = static_cast<std::uint16_t>(mShelfEnd);
    entry.v = static_cast<std::uint16_t>(mShelfTop);
    mShelfEnd += entry.width;
    mShelfHeight = std::max(mShelfHeight, static_cast<int>(entry.height));
    const bool isFirst = mChanged.first == mChanged.end;
    mChanged.first = isFirst ? mShelfTop : std::min(mChanged.first, mShelfTop);
    mChanged.end = isFirst ? mShelfTop + entry.height : std::max(mChanged.end, mShelfTop + entry.height);
    return true;
}

}  // namespace drawlist
