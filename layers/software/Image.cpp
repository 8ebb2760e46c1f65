#include "software/Image.h"

#include <algorithm>

namespace software {

Image::Image(std::uint32_t width, std::uint32_t height) {
    resize(width, height);
}

void Image::resize(std::uint32_t width, std::uint32_t height) {
    mWidth = std::min(width, MAX_IMAGE_SIDE);
    mHeight = std::min(height, MAX_IMAGE_SIDE);
    mPixels.assign(static_cast<std::size_t>(mWidth) * mHeight, Pixel());
}

void Image::fill(const Pixel& pixel) {
    std::fill(mPixels.begin(), mPixels.end(), pixel);
}

}  // namespace software
