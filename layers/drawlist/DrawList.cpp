#include "drawlist/DrawList.h"

#include <algorithm>

namespace drawlist {

void DrawList::setSize(int width, int height) {
    const auto side = [](int pixels) { return static_cast<std::uint32_t>(std::max(pixels, 0)); };
    if (side(width) == shape.width && side(height) == shape.height) {
        return;
    }
    shape = {side(width), side(height)};
    isDrawn = false;
}

void DrawList::forget() {
    isDrawn = false;
    glyphs.forget();
    pictureTimer.forget();
}

void DrawList::begin() {
    batch.begin(shape.all());
    glyphs.begin(shape);
    isDrawn = true;
    ++drawing;
}

std::array<Draw, Batch::PARTS> DrawList::draws() const {
    std::array<Draw, Batch::PARTS> draws;
    std::size_t first = 0;
    for (std::size_t i = 0; i < draws.size(); ++i) {
        const auto part = static_cast<Batch::Part>(i);
        draws[i] = {part, {first, batch.vertexCount(part)}};
        first += batch.vertexCount(part);
    }
    return draws;
}

}  // namespace drawlist
