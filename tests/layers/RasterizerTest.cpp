#include "software/Rasterizer.h"

#include <glm/common.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace software;

namespace {

const Paint WHITE = makePaint({1.0F, 1.0F, 1.0F, 1.0F});
const Paint HALF_WHITE = makePaint({1.0F, 1.0F, 1.0F, 0.5F});
constexpr Pixel BLACK{0, 0, 0, 255};
constexpr float INF = std::numeric_limits<float>::infinity();
constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

Image blackImage(std::uint32_t width, std::uint32_t height) {
    Image image(width, height);
    image.fill(BLACK);
    return image;
}

raster::PixelRect all(const Image& image) {
    return {0, 0, static_cast<int>(image.mWidth), static_cast<int>(image.mHeight)};
}

/// Pixels' worth of white in a picture that was black.
double ink(const Image& image) {
    double sum = 0.0;
    for (const Pixel& pixel : image.mPixels) {
        sum += pixel.mRed / 255.0;
    }
    return sum;
}

int largestDifference(const Image& a, const Image& b) {
    int largest = 0;
    for (std::size_t i = 0; i < a.mPixels.size(); ++i) {
        largest = std::max(largest, std::abs(a.mPixels[i].mRed - b.mPixels[i].mRed));
        largest = std::max(largest, std::abs(a.mPixels[i].mAlpha - b.mPixels[i].mAlpha));
    }
    return largest;
}

}  // namespace

TEST(Blend, ComposesOver) {
    const struct {
        Pixel mTarget;
        glm::vec4 mColor;
        Pixel mResult;
    } cases[] = {
        {{100, 0, 255, 255}, {200 / 255.0F, 1.0F, 0.0F, 0.25F}, {125, 64, 191, 255}},
        {{9, 9, 9, 0}, {1.0F, 0.0F, 0.0F, 0.5F}, {255, 0, 0, 128}},             // nothing of the old colour
        {{0, 60, 0, 51}, {240 / 255.0F, 0.0F, 0.0F, 0.5F}, {200, 10, 0, 153}},  // 0.5 + 0.2 * 0.5
        {{7, 8, 9, 200}, {1.0F, 1.0F, 1.0F, 0.0F}, {7, 8, 9, 200}},
        {{7, 8, 9, 0}, {1.0F, 1.0F, 1.0F, 0.001F}, {7, 8, 9, 0}},
        {{7, 8, 9, 255}, {2.0F, -1.0F, NOT_A_NUMBER, 7.0F}, {255, 0, 0, 255}},
        {{7, 8, 9, 255}, {1.0F, 1.0F, 1.0F, NOT_A_NUMBER}, {7, 8, 9, 255}},
    };
    for (const auto& blend : cases) {
        Pixel pixel = blend.mTarget;
        const Paint paint = makePaint(blend.mColor);
        blendOver(pixel, paint.mColor, toAlpha(paint.mAlpha));
        EXPECT_TRUE(pixel == blend.mResult) << &blend - cases;
    }
}

// A clip shows the same as the same place of the whole picture, and nothing else.
TEST(Rasterizer, ClipsAreWindows) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(-20.0F, 84.0F);
    const std::vector<std::uint8_t> texels(64, 200);
    for (int round = 0; round < 200; ++round) {
        std::vector<glm::vec2> points;
        for (int i = 0; i < 6; ++i) {
            points.emplace_back(place(random), place(random));
        }
        const glm::vec2 from = glm::min(points[0], points[1]);
        const glm::vec2 to = glm::max(points[0], points[1]);
        const raster::Box box{from.x, from.y, to.x, to.y};
        const auto draw = [&](const raster::PixelRect& clip) {
            Image image = blackImage(64, 64);
            Rasterizer rasterizer;
            rasterizer.fillStrip(image, clip, points.data(), points.size(), HALF_WHITE);
            rasterizer.strokeLine(image, clip, points.data(), points.size(), 1.5F, HALF_WHITE);
            Rasterizer::fillRect(image, clip, box, HALF_WHITE);
            rasterizer.drawTexels(image, clip, raster::TexelRect{texels.data(), 8, 8, 8}, box, HALF_WHITE);
            return image;
        };
        const Image whole = draw({0, 0, 64, 64});
        Image window = blackImage(64, 64);
        for (std::size_t y = 24; y < 40; ++y) {
            std::copy_n(whole.row(y) + 24, 16, window.row(y) + 24);
        }
        ASSERT_LE(largestDifference(draw({24, 24, 40, 40}), window), 1) << round;
    }
}

TEST(Rasterizer, SurvivesAnyCoordinate) {
    const std::vector<float> values{NOT_A_NUMBER, INF,    -INF, 1e30F, -1e30F,
                                    3e38F,        -3e38F, 0.0F, 5.5F,  1e-40F};
    const std::vector<std::uint8_t> texels(64, 200);
    Rasterizer rasterizer;
    std::mt19937 random(3);
    const auto any = [&] { return values[random() % values.size()]; };
    for (int round = 0; round < 3000; ++round) {
        Image image = blackImage(9, 7);
        const raster::PixelRect clip = all(image);
        std::array<glm::vec2, 5> points;
        std::generate(points.begin(), points.end(), [&] { return glm::vec2(any(), any()); });
        const raster::Box box{any(), any(), any(), any()};
        Rasterizer::fillRect(image, clip, box, WHITE);
        rasterizer.fillStrip(image, clip, points.data(), points.size(), WHITE);
        rasterizer.strokeLine(image, clip, points.data(), points.size(), 1.0F, WHITE);
        rasterizer.strokeSegments(image, clip, box, points.data(), points.size(), 1.0F, WHITE);
        rasterizer.drawTexels(image, clip, raster::TexelRect{texels.data(), 8, 8, 8}, box, WHITE);
        rasterizer.drawImage(image, clip, blackImage(3, 2), box);
        ASSERT_TRUE(std::all_of(image.mPixels.begin(), image.mPixels.end(),
                                [](const Pixel& pixel) { return pixel.mAlpha == 255; }));
    }
    // Far larger than the picture is all of the picture, not a number is none of it.
    Image image = blackImage(9, 7);
    const std::array<glm::vec2, 3> triangle{{{-1e30F, -1e30F}, {3e30F, 0.0F}, {-1e30F, 1e30F}}};
    rasterizer.fillStrip(image, all(image), triangle.data(), triangle.size(), WHITE);
    EXPECT_DOUBLE_EQ(ink(image), 63.0);
    const raster::Box nowhere{NOT_A_NUMBER, 0.0F, 9.0F, 7.0F};
    image = blackImage(9, 7);
    Rasterizer::fillRect(image, all(image), nowhere, WHITE);
    rasterizer.drawTexels(image, all(image), raster::TexelRect{texels.data(), 8, 8, 8}, nowhere, WHITE);
    EXPECT_DOUBLE_EQ(ink(image), 0.0);
}
