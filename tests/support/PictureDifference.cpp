#include "support/PictureDifference.h"

#include <algorithm>
#include <cstdlib>

namespace {

using software::Image;
using software::Pixel;

int difference(const Pixel& a, const Pixel& b) {
    return std::max({std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue),
                     std::abs(a.alpha - b.alpha)});
}

bool isEdge(const Image& image, std::uint32_t x, std::uint32_t y) {
    const Pixel& pixel = image.row(y)[x];
    for (std::uint32_t row = std::max(y, 1U) - 1; row < std::min(y + 2, image.mHeight); ++row) {
        for (std::uint32_t column = std::max(x, 1U) - 1; column < std::min(x + 2, image.mWidth); ++column) {
            if (!(image.row(row)[column] == pixel)) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace

PictureDifference comparePictures(const Image& expected, const Image& drawn) {
    PictureDifference result;
    if (expected.mWidth != drawn.mWidth || expected.mHeight != drawn.mHeight || expected.mPixels.empty()) {
        return {255, 255, 255.0, 1.0};
    }
    double sum = 0.0;
    int edges = 0;
    for (std::uint32_t y = 0; y < expected.mHeight; ++y) {
        for (std::uint32_t x = 0; x < expected.mWidth; ++x) {
            const int step = difference(expected.row(y)[x], drawn.row(y)[x]);
            result.share += step > LARGEST_ROUNDING ? 1.0 : 0.0;
            if (isEdge(expected, x, y)) {
                result.largestAtEdges = std::max(result.largestAtEdges, step);
                sum += step;
                ++edges;
            } else {
                result.largestInside = std::max(result.largestInside, step);
            }
        }
    }
    result.share /= static_cast<double>(expected.mPixels.size());
    result.meanAtEdges = edges > 0 ? sum / edges : 0.0;
    return result;
}
