#include "scene/FrameTimeBars.h"

#include "drawers/MeshDrawer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace scene {

namespace {

/// About how many bars there are; each is whole pixels wide.
constexpr float USUAL_BARS = 250.0F;

}  // namespace

void FrameTimeBars::place(const glm::vec2& position, const glm::vec2& size, const Canvas& canvas) {
    const float pixels = size.x * canvas.pixels.x;
    const float barPixels = std::max(std::ceil(pixels / USUAL_BARS), 1.0F);
    mRoom = static_cast<std::size_t>(std::clamp(std::floor(pixels / barPixels), 1.0F, USUAL_BARS));
    mBarWidth = 2.0F * barPixels / std::max(pixels, 1.0F);
    mRows = std::max(std::floor(size.y * canvas.pixels.y), 1.0F);
    for (drawer::MeshDrawer* const part : mParts) {
        part->mPosition = position;
        part->mSize = size;
        part->mVertices.clear();
        part->mVertices.reserve(2 * mRoom);
    }
}

/// `scales` are the rows of each part for a nanosecond; 0: it is left out.
FrameTimeBars::Bar FrameTimeBars::toBar(const FrameTime& frame,
                                        const std::array<float, PARTS>& scales) const {
    const auto toFloat = [](std::uint64_t value) {
        return static_cast<float>(static_cast<std::int64_t>(value));  // as unsigned, it takes a branch
    };
    // GPU work during the swap counts for the GPU; the rest of the swap is waiting for the screen or for
    // earlier frames.
    const float total = toFloat(frame.total);
    const float gpu = std::min(std::max(static_cast<float>(frame.gpu), 0.0F), total);
    const float swap = std::min(toFloat(frame.swap), total - gpu);
    const float lengths[PARTS] = {swap, gpu, total - swap - gpu};
    float rows = 0.5F;
    Bar bar;
    for (std::size_t i = PARTS; i-- > 0;) {
        rows += lengths[i] * scales[i];
        bar[i] = static_cast<int>(std::min(rows, mRows));
    }
    return bar;
}

/// Bars whose part is the same beside each other make one rectangle of that part.
void FrameTimeBars::set(const FrameTimes& times, std::size_t first, std::size_t count, float topNs,
                        const std::array<bool, PARTS>& isShown) {
    for (drawer::MeshDrawer* const part : mParts) {
        part->mVertices.clear();
    }
    std::array<float, PARTS> scales{};
    for (std::size_t part = 0; part < PARTS; ++part) {
        scales[part] = isShown[part] ? mRows / topNs : 0.0F;
    }
    const auto lowerEnd = [](const Bar& bar, std::size_t part) {
        return part + 1 < PARTS ? bar[part + 1] : 0;
    };
    constexpr Bar END = {-1, -1, -1};  // differs from all bars
    std::array<std::size_t, PARTS> starts{};
    Bar last{};
    for (std::size_t i = 0; i <= count; ++i) {
        const Bar bar = i < count ? toBar(times.ago(first + i), scales) : END;
        if (bar == last) {
            continue;
        }
        for (std::size_t part = 0; part < PARTS; ++part) {
            const int low = lowerEnd(last, part);
            if (bar[part] != last[part] || lowerEnd(bar, part) != low) {
                add(part, {starts[part], i}, {low, last[part]});
                starts[part] = i;
            }
        }
        last = bar;
    }
}

/// From the right, bars from one to before the other; of these rows.
void FrameTimeBars::add(std::size_t part, const std::array<std::size_t, 2>& bars,
                        const std::array<int, 2>& rows) {
    if (rows[0] < rows[1]) {
        const float rowHeight = 2.0F / mRows;
        const auto x = [this](std::size_t bar) { return 1.0F - static_cast<float>(bar) * mBarWidth; };
        const auto y = [rowHeight](int row) { return 1.0F - static_cast<float>(row) * rowHeight; };
        std::vector<gui::Vertex>& vertices = mParts[part]->mVertices;
        vertices.push_back({x(bars[0]), y(rows[0])});
        vertices.push_back({x(bars[1]), y(rows[1])});
    }
}

void FrameTimeBars::draw() {
    for (drawer::MeshDrawer* const part : mParts) {
        part->draw();
    }
}

}  // namespace scene
