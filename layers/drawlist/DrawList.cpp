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
}

void DrawList::begin() {
    batch.begin(shape.all());
    glyphs.begin(shape);
    isDrawn = true;
    ++drawing;
}

}  // namespace drawlist
