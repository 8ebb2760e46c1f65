#include "AtlasPacker.h"

#include <algorithm>
#include <random>
#include <utility>

namespace fontgen {
namespace {

constexpr std::uint32_t MAX_ATTEMPTS = 2000;
// For the order of the glyphs, a row of height weighs more than any width. The order is shuffled by up to
// MAX_BLUR eighths of a row.
constexpr std::uint32_t RANK_OF_A_ROW = 64;
constexpr std::uint32_t MAX_BLUR = 64;

struct Rect {
    std::uint32_t x;
    std::uint32_t y;
    std::uint32_t width;
    std::uint32_t height;

    std::uint32_t right() const { return x + width; }
    std::uint32_t bottom() const { return y + height; }

    bool overlaps(const Rect& other) const {
        return x < other.right() && other.x < right() && y < other.bottom() && other.y < bottom();
    }

    bool contains(const Rect& other) const {
        return x <= other.x && y <= other.y && other.right() <= right() && other.bottom() <= bottom();
    }
};

// The largest free rectangles; they may overlap each other.
class FreeSpace {
public:
    explicit FreeSpace(const Rect& whole) : mRects{whole} {}

    const std::vector<Rect>& rects() const { return mRects; }

    void take(const Rect& used) {
        std::vector<Rect> left;
        for (const Rect& rect : mRects) {
            if (!rect.overlaps(used)) {
                left.push_back(rect);
                continue;
            }
            if (used.x > rect.x) {
                left.push_back({rect.x, rect.y, used.x - rect.x, rect.height});
            }
            if (used.right() < rect.right()) {
                left.push_back({used.right(), rect.y, rect.right() - used.right(), rect.height});
            }
            if (used.y > rect.y) {
                left.push_back({rect.x, rect.y, rect.width, used.y - rect.y});
            }
            if (used.bottom() < rect.bottom()) {
                left.push_back({rect.x, used.bottom(), rect.width, rect.bottom() - used.bottom()});
            }
        }
        mRects.clear();
        for (std::size_t i = 0; i < left.size(); ++i) {
            bool needed = true;
            for (std::size_t k = 0; k < left.size() && needed; ++k) {
                const bool same = left[k].contains(left[i]) && left[i].contains(left[k]);
                needed = k == i || !left[k].contains(left[i]) || (same && i < k);
            }
            if (needed) {
                mRects.push_back(left[i]);
            }
        }
    }

private:
    std::vector<Rect> mRects;
};

// How badly a size fits into a free rectangle: the smaller remaining side first, then the larger one.
std::pair<std::uint32_t, std::uint32_t> waste(const Rect& free, std::uint32_t width, std::uint32_t height) {
    return std::minmax({free.width - width, free.height - height});
}

// Places the glyphs in the given order, each where it fits best.
bool placeInOrder(FreeSpace space, const std::vector<Glyph*>& order, std::uint32_t gap) {
    for (Glyph* const glyph : order) {
        const std::uint32_t width = glyph->box.width + gap;
        const std::uint32_t height = glyph->box.height + gap;
        const Rect* best = nullptr;
        for (const Rect& free : space.rects()) {
            if (free.width >= width && free.height >= height &&
                (best == nullptr || waste(free, width, height) < waste(*best, width, height))) {
                best = &free;
            }
        }
        if (best == nullptr) {
            return false;
        }
        glyph->box.x = best->x;
        glyph->box.y = best->y;
        space.take({best->x, best->y, width, height});
    }
    return true;
}

}  // namespace

bool packGlyphs(std::vector<Glyph>& glyphs, std::uint32_t gap) {
    // Every box includes the gap at its right and bottom, and so does the bitmap.
    FreeSpace space({0, 0, BITMAP_WIDTH + gap, BITMAP_HEIGHT + gap});
    std::vector<Glyph*> waiting;
    for (Glyph& glyph : glyphs) {
        if (const GlyphBox* const fixed = fixedBox(glyph.code)) {
            glyph.box.x = fixed->x;
            glyph.box.y = fixed->y;
            space.take({fixed->x, fixed->y, fixed->width + gap, fixed->height + gap});
        } else {
            waiting.push_back(&glyph);
        }
    }

    // High glyphs go first. If that leaves no room for the last ones, a similar order may do better. The
    // generator's sequence is fixed, so the same boxes always get the same places.
    std::mt19937 random;
    std::vector<std::pair<std::uint32_t, Glyph*>> ranked;
    std::vector<Glyph*> order(waiting.size());
    for (std::uint32_t attempt = 0; attempt < MAX_ATTEMPTS; ++attempt) {
        const std::uint32_t blur = std::min(attempt, MAX_BLUR);
        ranked.clear();
        for (Glyph* const glyph : waiting) {
            const auto noise = static_cast<std::uint32_t>(random()) % (blur * RANK_OF_A_ROW / 8 + 1);
            ranked.emplace_back(glyph->box.height * RANK_OF_A_ROW + glyph->box.width + noise, glyph);
        }
        std::stable_sort(ranked.begin(), ranked.end(),
                         [](const auto& a, const auto& b) { return a.first > b.first; });
        std::transform(ranked.begin(), ranked.end(), order.begin(),
                       [](const auto& entry) { return entry.second; });
        if (placeInOrder(space, order, gap)) {
            return true;
        }
    }
    return false;
}

}  // namespace fontgen
