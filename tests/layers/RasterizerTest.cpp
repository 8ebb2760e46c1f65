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

int maximumAlpha(const Image& image) {
    return std::max_element(image.mPixels.begin(), image.mPixels.end(),
                            [](const Pixel& a, const Pixel& b) { return a.mAlpha < b.mAlpha; })
        ->mAlpha;
}

/// A box as the strip of a graph fill: `steps` pairs of a top and a bottom point.
std::vector<glm::vec2> stripOf(const raster::Box& box, int steps) {
    std::vector<glm::vec2> points;
    for (int i = 0; i <= steps; ++i) {
        const float x =
            box.mLeft + (box.mRight - box.mLeft) * static_cast<float>(i) / static_cast<float>(steps);
        points.emplace_back(x, box.mTop);
        points.emplace_back(x, box.mBottom);
    }
    return points;
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

TEST(Rasterizer, BoxesCoverTheirAreaAndStripsTheSameWithoutSeams) {
    const std::pair<raster::Box, double> cases[] = {
        {{5.0F, 4.0F, 25.0F, 14.0F}, 200.0},  {{5.25F, 4.5F, 25.25F, 14.5F}, 200.0},
        {{5.2F, 4.0F, 5.7F, 24.0F}, 10.0},    {{7.9F, 3.6F, 8.2F, 4.1F}, 0.15},
        {{-10.0F, -3.0F, 10.0F, 2.5F}, 25.0}, {{35.5F, 28.5F, 1e30F, 1e30F}, 6.75},
        {{12.0F, 4.0F, 12.0F, 20.0F}, 0.0},
    };
    for (const auto& [box, area] : cases) {
        Image image = blackImage(40, 30);
        Rasterizer::fillRect(image, all(image), box, WHITE);
        EXPECT_NEAR(ink(image), area, 0.12);
        Image expected = blackImage(40, 30);
        Rasterizer::fillRect(expected, all(expected), box, HALF_WHITE);
        for (const int steps : {1, 7, 100}) {
            image = blackImage(40, 30);
            const std::vector<glm::vec2> points = stripOf(box, steps);
            Rasterizer().fillStrip(image, all(image), points.data(), points.size(), HALF_WHITE);
            EXPECT_LE(largestDifference(image, expected), 1) << area << ' ' << steps;
        }
    }
}

TEST(Rasterizer, SlopesCoverTheirExactArea) {
    Image image = blackImage(40, 30);
    const std::array<glm::vec2, 4> points{{{3.3F, 2.2F}, {36.9F, 11.7F}, {8.1F, 27.5F}, {20.0F, 29.0F}}};
    Rasterizer().fillStrip(image, all(image), points.data(), points.size(), WHITE);
    const auto area = [](const glm::vec2& a, const glm::vec2& b, const glm::vec2& c) {
        return 0.5 * std::fabs((b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x));
    };
    EXPECT_NEAR(ink(image), area(points[0], points[1], points[2]) + area(points[1], points[2], points[3]),
                0.1);
}

// Whatever lies outside: a small picture shows the same as the same place of a large one.
TEST(Rasterizer, PicturesAndClipsAreWindows) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(-20.0F, 84.0F);
    const std::vector<std::uint8_t> texels(64, 200);
    for (int round = 0; round < 200; ++round) {
        std::vector<glm::vec2> points;
        for (int i = 0; i < 6; ++i) {
            points.emplace_back(place(random), place(random));
        }
        const auto draw = [&](Image& image, const raster::PixelRect& clip, float shift) {
            std::vector<glm::vec2> moved;
            for (const glm::vec2& point : points) {
                moved.push_back(point - glm::vec2(shift));
            }
            const glm::vec2 from = glm::min(moved[0], moved[1]);
            const glm::vec2 to = glm::max(moved[0], moved[1]);
            const raster::Box box{from.x, from.y, to.x, to.y};
            Rasterizer rasterizer;
            rasterizer.fillStrip(image, clip, moved.data(), moved.size(), HALF_WHITE);
            rasterizer.strokeLine(image, clip, moved.data(), moved.size(), 1.5F, HALF_WHITE);
            Rasterizer::fillRect(image, clip, box, HALF_WHITE);
            rasterizer.drawTexels(image, clip, raster::TexelRect{texels.data(), 8, 8, 8}, box, HALF_WHITE);
        };
        Image large = blackImage(64, 64);
        draw(large, all(large), 0.0F);
        Image clipped = blackImage(64, 64);
        draw(clipped, {24, 24, 40, 40}, 0.0F);
        Image small = blackImage(16, 16);
        draw(small, all(small), 24.0F);
        Image window = blackImage(16, 16);
        Image beyond = blackImage(64, 64);
        for (std::size_t y = 0; y < 16; ++y) {
            std::copy_n(large.row(y + 24) + 24, 16, window.row(y));
            std::copy_n(large.row(y + 24) + 24, 16, beyond.row(y + 24) + 24);
        }
        ASSERT_LE(largestDifference(clipped, beyond), 1) << round;
        ASSERT_LE(largestDifference(small, window), 2) << round;
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

// The ink of twice the length less that of the single length: what the ends add drops out.
TEST(Rasterizer, LinesHaveTheirWidthAtEveryAngleAndJoinWithoutDoubleBlending) {
    for (const std::pair<float, float>& line :
         {std::pair(0.0F, 1.0F), {90.0F, 1.0F}, {45.0F, 1.0F}, {10.0F, 2.0F}, {63.0F, 3.5F}}) {
        const float degrees = line.first;
        const float width = line.second;
        SCOPED_TRACE(degrees);
        const float angle = degrees * 3.14159265F / 180.0F;
        const auto draw = [angle, width](float length, int pieces, const Paint& paint, Image image) {
            std::vector<glm::vec2> points;
            for (int i = 0; i <= pieces; ++i) {
                const float at = length * static_cast<float>(i) / static_cast<float>(pieces);
                points.push_back(glm::vec2(6.3F, 7.1F) + at * glm::vec2(std::cos(angle), std::sin(angle)));
            }
            Rasterizer().strokeLine(image, all(image), points.data(), points.size(), width, paint);
            return image;
        };
        const Image black = blackImage(100, 100);
        EXPECT_NEAR((ink(draw(80.0F, 1, WHITE, black)) - ink(draw(40.0F, 1, WHITE, black))) / 40.0, width,
                    0.04 * width);
        const Image whole = draw(60.0F, 1, HALF_WHITE, Image(100, 100));
        const Image joined = draw(60.0F, 90, HALF_WHITE, Image(100, 100));
        EXPECT_LE(largestDifference(whole, joined), 1);
        EXPECT_GE(maximumAlpha(whole), 75);
        EXPECT_LE(maximumAlpha(joined), 128);
    }
}

TEST(Rasterizer, GridLinesFillWholePixelsInsideTheirFrame) {
    const raster::Box frame{2.0F, 3.0F, 62.0F, 43.0F};
    for (const float width : {1.0F, 2.0F, 2.4F}) {
        const auto whole = static_cast<int>(std::round(width));
        for (float x = 2.0F; x <= 62.0F; x += 0.35F) {
            Image image(64, 48);
            const std::array<glm::vec2, 4> points{{{x, 43.0F}, {x, 3.0F}, {2.0F, 20.4F}, {62.0F, 20.401F}}};
            Rasterizer().strokeSegments(image, all(image), frame, points.data(), points.size(), width,
                                        HALF_WHITE);
            int columns = 0;
            double centers = 0.0;
            for (int column = 0; column < 64; ++column) {
                const int alpha = image.row(40)[column].mAlpha;
                ASSERT_TRUE(alpha == 0 || (alpha == 128 && column >= 2 && column < 62)) << x << ' ' << column;
                if (alpha == 128) {
                    ++columns;
                    centers += column + 0.5;
                }
            }
            ASSERT_EQ(columns, whole) << x;
            ASSERT_NEAR(centers / columns, x, x < 3.5F || x > 60.5F ? 1.0 : 0.76) << width;
            ASSERT_EQ(maximumAlpha(image), 128);  // where lines cross, too
        }
    }
}

TEST(Rasterizer, GlyphsKeepTheirInkAndNothingOfTheirNeighbours) {
    constexpr std::size_t STRIDE = 32;
    constexpr std::size_t FIRST = 5 * STRIDE + 5;
    std::mt19937 random(11);
    std::vector<std::uint8_t> bitmap(STRIDE * 44, 255);
    std::vector<std::uint8_t> alone(bitmap.size(), 0);
    double sum = 0.0;
    for (std::size_t y = 0; y < 34; ++y) {
        for (std::size_t x = FIRST + y * STRIDE; x < FIRST + y * STRIDE + 22; ++x) {
            bitmap[x] = alone[x] = static_cast<std::uint8_t>(random() % 256);
            sum += bitmap[x] / 255.0;
        }
    }
    for (const float scale : {0.05F, 0.2787F, 1.0F, 3.0F}) {
        for (const float shift : {0.0F, 0.31F, 0.5F}) {
            const float start = 8.0F + shift;
            const raster::Box box{start, start, start + 22.0F * scale, start + 34.0F * scale};
            const auto draw = [&](const std::vector<std::uint8_t>& texels) {
                Image image = blackImage(80, 120);
                const raster::TexelRect glyph{&texels[FIRST], STRIDE, 22, 34};
                Rasterizer().drawTexels(image, all(image), glyph, box, WHITE);
                return image;
            };
            const Image image = draw(bitmap);
            const double expected = sum * scale * scale;
            EXPECT_NEAR(ink(image), expected, 0.01 * expected + 0.05) << scale << ' ' << shift;
            EXPECT_EQ(largestDifference(image, draw(alone)), 0) << scale << ' ' << shift;
        }
    }
}

TEST(Rasterizer, ScaledPicturesAverageColoursByAlpha) {
    Image source(90, 60);
    for (std::size_t y = 0; y < 60; ++y) {
        for (std::size_t x = 0; x < 90; ++x) {
            // Left: columns of opaque red and of invisible green. Right: a checkerboard of black and white.
            const std::uint8_t check = (x + y) % 2 == 0 ? 255 : 0;
            source.row(y)[x] = x >= 45      ? Pixel{check, check, check, 255}
                               : x % 2 == 0 ? Pixel{255, 0, 0, 255}
                                            : Pixel{0, 255, 0, 0};
        }
    }
    Image image(20, 10);
    Rasterizer().drawImage(image, all(image), source, {2.0F, 1.0F, 12.0F, 7.0F});
    EXPECT_TRUE(image.row(3)[1] == Pixel());
    EXPECT_TRUE(image.row(3)[12] == Pixel());
    const Pixel left = image.row(3)[4];
    EXPECT_TRUE(left.mRed == 255 && left.mGreen == 0);
    EXPECT_NEAR(left.mAlpha, 128, 15);
    EXPECT_NEAR(image.row(3)[9].mRed, 128, 2);
    EXPECT_EQ(image.row(3)[9].mAlpha, 255);
}
