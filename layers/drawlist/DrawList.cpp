#include "drawlist/DrawList.h"

#include <algorithm>

namespace drawlist {

void DrawList::setSize(int width, int height) {
    const auto side = [](int pixels) { return static_cast<std::uint32_t>(std::max(pixels, 0)); };
    if (side(width) == shape.mWidth && side(height) == shape.mHeight) {
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

std::array<Draw, 3> DrawList::draws() const {
    const Batch::Range picture = batch.picture();
    if (picture.mCount == 0) {
        return {{{{0, batch.vertexCount()}, false}}};
    }
    const std::size_t rest = picture.mFirst + picture.mCount;
    return {{{{0, picture.mFirst}, false}, {picture, true}, {{rest, batch.vertexCount() - rest}, false}}};
}

}  // namespace drawlist
