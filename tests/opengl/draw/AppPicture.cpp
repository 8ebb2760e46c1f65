#include "opengl/draw/AppPicture.h"

#include "opengl/context/HeadlessContext.h"

#include <functional>

namespace {

constexpr int COLUMNS = 20;
constexpr int ROWS = 12;

using Paint = std::function<void(int left, int top, int right, int bottom, const software::Pixel& color)>;

void forEachBlock(int width, int height, const Paint& paint) {
    for (int row = 0; row < ROWS; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            const auto shade = static_cast<std::uint8_t>(30 + 10 * row);
            const bool isLight = (row + column) % 3 == 0;
            paint(width * column / COLUMNS, height * row / ROWS, width * (column + 1) / COLUMNS,
                  height * (row + 1) / ROWS,
                  isLight ? software::Pixel{160, 140, shade, 255} : software::Pixel{shade, shade, 90, 255});
        }
    }
}

}  // namespace

void paintBlocks(software::Image& image) {
    forEachBlock(static_cast<int>(image.mWidth), static_cast<int>(image.mHeight),
                 [&image](int left, int top, int right, int bottom, const software::Pixel& color) {
                     for (int y = top; y < bottom; ++y) {
                         for (int x = left; x < right; ++x) {
                             image.row(static_cast<std::size_t>(y))[x] = color;
                         }
                     }
                 });
}

void paintBlocks(const opengl::Functions& gl, int width, int height) {
    const auto clearColor =
        reinterpret_cast<PFNGLCLEARCOLORPROC>(HeadlessContext::getProcAddress("glClearColor"));
    const auto clear = reinterpret_cast<PFNGLCLEARPROC>(HeadlessContext::getProcAddress("glClear"));
    gl.enable(GL_SCISSOR_TEST);
    forEachBlock(width, height, [&](int left, int top, int right, int bottom, const software::Pixel& color) {
        const auto share = [](std::uint8_t channel) { return static_cast<float>(channel) / 255.0F; };
        gl.scissor(left, height - bottom, right - left, bottom - top);
        clearColor(share(color.mRed), share(color.mGreen), share(color.mBlue), 1.0F);
        clear(GL_COLOR_BUFFER_BIT);
    });
    gl.disable(GL_SCISSOR_TEST);
}
