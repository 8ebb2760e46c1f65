#include "opengl/draw/DrawTarget.h"

#include <algorithm>

namespace opengl {

void DrawTarget::setSize(int width, int height) {
    const auto side = [](int pixels) { return static_cast<std::uint32_t>(std::max(pixels, 0)); };
    if (side(width) == shape.mWidth && side(height) == shape.mHeight) {
        return;
    }
    shape = {side(width), side(height)};
    isDrawn = false;
}

void DrawTarget::forget() {
    isDrawn = false;
    glyphs.forget();
}

void DrawTarget::begin() {
    batch.begin(shape.all());
    glyphs.begin(shape);
    isDrawn = true;
    ++drawing;
}

}  // namespace opengl
