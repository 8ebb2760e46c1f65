#include "software/Rasterizer.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

using software::Box;
using software::Image;
using software::Paint;
using software::Pixel;
using software::PixelRect;
using software::Rasterizer;
using software::TexelRect;

namespace {

const Paint WHITE = software::makePaint({1.0F, 1.0F, 1.0F, 1.0F});
const Paint HALF_WHITE = software::makePaint({1.0F, 1.0F, 1.0F, 0.5F});
constexpr Pixel BLACK{0, 0, 0, 255};
constexpr float INF = std::numeric_limits<float>::infinity();
constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

Image blackImage(std::uint32_t width, std::uint32_t height) {
    Image image(width, height);
    image.fill(BLACK);
    return image;
}

PixelRect all(const Image& image) {
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
    int alpha = 0;
    for (const Pixel& pixel : image.mPixels) {
        alpha = std::max(alpha, int{pixel.mAlpha});
    }
    return alpha;
}

/// A box as the strip of a graph fill: `steps` pairs of a top and a bottom point.
std::vector<glm::vec2> stripOf(const Box& box, int steps) {
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

struct BlendCase {
    Pixel mTarget;
    glm::vec4 mColor;
    Pixel mResult;
};

class Blend : public testing::TestWithParam<BlendCase> {};

TEST_P(Blend, ComposesOver) {
    Pixel pixel = GetParam().mTarget;
    const Paint paint = software::makePaint(GetParam().mColor);
    software::blendOver(pixel, paint.mColor, software::toAlpha(paint.mAlpha));
    EXPECT_TRUE(pixel == GetParam().mResult)
        << int{pixel.mRed} << ' ' << int{pixel.mGreen} << ' ' << int{pixel.mBlue} << ' ' << int{pixel.mAlpha};
}

INSTANTIATE_TEST_SUITE_P(
    Pixels, Blend,
    testing::Values(
        BlendCase{{100, 0, 255, 255}, {200 / 255.0F, 1.0F, 0.0F, 0.25F}, {125, 64, 191, 255}},
        BlendCase{{9, 9, 9, 0}, {1.0F, 0.0F, 0.0F, 0.5F}, {255, 0, 0, 128}},  // nothing of the old colour
        BlendCase{{0, 60, 0, 51}, {240 / 255.0F, 0.0F, 0.0F, 0.5F}, {200, 10, 0, 153}},  // 0.5 + 0.2 * 0.5
        BlendCase{{7, 8, 9, 200}, {1.0F, 1.0F, 1.0F, 0.0F}, {7, 8, 9, 200}},
        BlendCase{{7, 8, 9, 200}, {0.0F, 1.0F, 0.0F, 1.0F}, {0, 255, 0, 255}},
        BlendCase{{7, 8, 9, 0}, {1.0F, 1.0F, 1.0F, 0.001F}, {7, 8, 9, 0}},
        BlendCase{{7, 8, 9, 255}, {2.0F, -1.0F, NOT_A_NUMBER, 7.0F}, {255, 0, 0, 255}},
        BlendCase{{7, 8, 9, 255}, {1.0F, 1.0F, 1.0F, NOT_A_NUMBER}, {7, 8, 9, 255}}));

struct BoxCase {
    Box mBox;
    double mArea;
};

class Boxes : public testing::TestWithParam<BoxCase> {};

TEST_P(Boxes, CoverTheirArea) {
    Image image = blackImage(40, 30);
    Rasterizer::fillRect(image, all(image), GetParam().mBox, WHITE);
    EXPECT_NEAR(ink(image), GetParam().mArea, 0.12);
}

TEST_P(Boxes, StripsEqualRectanglesWithoutSeams) {
    for (const int steps : {1, 2, 7, 100}) {
        Image expected = blackImage(40, 30);
        Rasterizer::fillRect(expected, all(expected), GetParam().mBox, HALF_WHITE);
        Image image = blackImage(40, 30);
        const std::vector<glm::vec2> points = stripOf(GetParam().mBox, steps);
        Rasterizer().fillStrip(image, all(image), points.data(), points.size(), HALF_WHITE);
        EXPECT_LE(largestDifference(image, expected), 1) << steps;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Places, Boxes,
    testing::Values(BoxCase{{5.0F, 4.0F, 25.0F, 14.0F}, 200.0}, BoxCase{{5.25F, 4.5F, 25.25F, 14.5F}, 200.0},
                    BoxCase{{5.9F, 4.1F, 25.9F, 14.1F}, 200.0}, BoxCase{{5.2F, 4.0F, 5.7F, 24.0F}, 10.0},
                    BoxCase{{7.9F, 3.6F, 8.2F, 4.1F}, 0.15}, BoxCase{{-10.0F, -3.0F, 10.0F, 2.5F}, 25.0},
                    BoxCase{{35.5F, 28.5F, 1e30F, 1e30F}, 6.75}, BoxCase{{12.0F, 4.0F, 12.0F, 20.0F}, 0.0}));

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
        const auto draw = [&](Image& image, const PixelRect& clip, float shift) {
            std::vector<glm::vec2> moved = points;
            for (glm::vec2& point : moved) {
                point -= glm::vec2(shift);
            }
            const Box box{std::min(moved[0].x, moved[1].x), std::min(moved[0].y, moved[1].y),
                          std::max(moved[0].x, moved[1].x), std::max(moved[0].y, moved[1].y)};
            Rasterizer rasterizer;
            rasterizer.fillStrip(image, clip, moved.data(), moved.size(), HALF_WHITE);
            rasterizer.strokeLine(image, clip, moved.data(), moved.size(), 1.5F, HALF_WHITE);
            Rasterizer::fillRect(image, clip, box, HALF_WHITE);
            rasterizer.drawTexels(image, clip, TexelRect{texels.data(), 8, 8, 8}, box, HALF_WHITE);
        };
        Image large = blackImage(64, 64);
        draw(large, all(large), 0.0F);
        Image clipped = blackImage(64, 64);
        draw(clipped, {24, 24, 40, 40}, 0.0F);
        Image small = blackImage(16, 16);
        draw(small, all(small), 24.0F);
        Image window = blackImage(16, 16);
        for (std::size_t y = 0; y < 64; ++y) {
            for (std::size_t x = 0; x < 64; ++x) {
                if (x >= 24 && x < 40 && y >= 24 && y < 40) {
                    window.row(y - 24)[x - 24] = large.row(y)[x];
                    ASSERT_NEAR(clipped.row(y)[x].mRed, large.row(y)[x].mRed, 1) << round;
                } else {
                    ASSERT_TRUE(clipped.row(y)[x] == BLACK) << round;
                }
            }
        }
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
        const PixelRect clip = all(image);
        std::array<glm::vec2, 5> points;
        for (glm::vec2& point : points) {
            point = {any(), any()};
        }
        const Box box{any(), any(), any(), any()};
        Rasterizer::fillRect(image, clip, box, WHITE);
        rasterizer.fillStrip(image, clip, points.data(), points.size(), WHITE);
        rasterizer.strokeLine(image, clip, points.data(), points.size(), 1.0F, WHITE);
        rasterizer.strokeSegments(image, clip, box, points.data(), points.size(), 1.0F, WHITE);
        rasterizer.drawTexels(image, clip, TexelRect{texels.data(), 8, 8, 8}, box, WHITE);
        rasterizer.drawImage(image, clip, blackImage(3, 2), box);
        for (const Pixel& pixel : image.mPixels) {
            ASSERT_EQ(pixel.mAlpha, 255);
        }
    }
    // Far larger than the picture is all of the picture, not a number is none of it.
    Image image = blackImage(9, 7);
    const std::array<glm::vec2, 3> triangle{{{-1e30F, -1e30F}, {3e30F, 0.0F}, {-1e30F, 1e30F}}};
    rasterizer.fillStrip(image, all(image), triangle.data(), triangle.size(), WHITE);
    EXPECT_DOUBLE_EQ(ink(image), 63.0);
    const Box nowhere{NOT_A_NUMBER, 0.0F, 9.0F, 7.0F};
    image = blackImage(9, 7);
    Rasterizer::fillRect(image, all(image), nowhere, WHITE);
    rasterizer.drawTexels(image, all(image), TexelRect{texels.data(), 8, 8, 8}, nowhere, WHITE);
    EXPECT_DOUBLE_EQ(ink(image), 0.0);
}

struct LineCase {
    float mDegrees;
    float mWidth;
};

class Lines : public testing::TestWithParam<LineCase> {};

// The ink of twice the length less that of the single length: what the ends add drops out.
TEST_P(Lines, HaveTheirWidthAtEveryAngle) {
    const float angle = GetParam().mDegrees * 3.14159265F / 180.0F;
    const glm::vec2 start(6.3F, 7.1F);
    const glm::vec2 direction(std::cos(angle), std::sin(angle));
    const auto inkOf = [&](float length) {
        Image image = blackImage(100, 100);
        const std::array<glm::vec2, 2> points{{start, start + direction * length}};
        Rasterizer().strokeLine(image, all(image), points.data(), points.size(), GetParam().mWidth, WHITE);
        return ink(image);
    };
    EXPECT_NEAR((inkOf(80.0F) - inkOf(40.0F)) / 40.0, GetParam().mWidth, 0.04 * GetParam().mWidth);
}

TEST_P(Lines, JoinWithoutDoubleBlending) {
    const float angle = GetParam().mDegrees * 3.14159265F / 180.0F;
    const glm::vec2 end = glm::vec2(4.4F) + 60.0F * glm::vec2(std::cos(angle), std::sin(angle));
    std::vector<glm::vec2> pieces;
    for (int i = 0; i <= 90; ++i) {
        pieces.push_back(glm::vec2(4.4F) + (end - 4.4F) * (static_cast<float>(i) / 90.0F));
    }
    Image whole(72, 72);
    Image joined(72, 72);
    const std::array<glm::vec2, 2> ends{{pieces.front(), pieces.back()}};
    Rasterizer().strokeLine(whole, all(whole), ends.data(), ends.size(), GetParam().mWidth, HALF_WHITE);
    Rasterizer().strokeLine(joined, all(joined), pieces.data(), pieces.size(), GetParam().mWidth, HALF_WHITE);
    EXPECT_LE(largestDifference(whole, joined), 1);
    EXPECT_GE(maximumAlpha(whole), 90);
    EXPECT_LE(maximumAlpha(joined), 128);
}

INSTANTIATE_TEST_SUITE_P(Angles, Lines,
                         testing::Values(LineCase{0.0F, 1.0F}, LineCase{90.0F, 1.0F}, LineCase{45.0F, 1.0F},
                                         LineCase{10.0F, 2.0F}, LineCase{63.0F, 3.5F}));

TEST(Rasterizer, GridLinesFillWholePixelsInsideTheirFrame) {
    const Box frame{2.0F, 3.0F, 62.0F, 43.0F};
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
    constexpr int WIDTH = 22;
    constexpr int HEIGHT = 34;
    constexpr std::size_t STRIDE = WIDTH + 10;
    std::mt19937 random(11);
    std::vector<std::uint8_t> bitmap(STRIDE * (HEIGHT + 10), 255);
    std::vector<std::uint8_t> alone(bitmap.size(), 0);
    double sum = 0.0;
    for (std::size_t y = 5; y < HEIGHT + 5; ++y) {
        for (std::size_t x = 5; x < WIDTH + 5; ++x) {
            const auto texel = static_cast<std::uint8_t>(random() % 256);
            bitmap[y * STRIDE + x] = texel;
            alone[y * STRIDE + x] = texel;
            sum += texel / 255.0;
        }
    }
    const std::size_t first = 5 * STRIDE + 5;
    for (const float scale : {0.05F, 0.2787F, 0.5F, 1.0F, 1.7F, 3.0F}) {
        for (const float shift : {0.0F, 0.31F, 0.5F, 0.97F}) {
            const Box box{10.0F + shift, 8.0F + shift, 10.0F + shift + WIDTH * scale,
                          8.0F + shift + HEIGHT * scale};
            Image image = blackImage(100, 130);
            Rasterizer().drawTexels(image, all(image), TexelRect{&bitmap[first], STRIDE, WIDTH, HEIGHT}, box,
                                    WHITE);
            const double expected = sum * scale * scale;
            EXPECT_NEAR(ink(image), expected, 0.01 * expected + 0.05) << scale << ' ' << shift;
            Image other = blackImage(100, 130);
            Rasterizer().drawTexels(other, all(other), TexelRect{&alone[first], STRIDE, WIDTH, HEIGHT}, box,
                                    WHITE);
            EXPECT_EQ(largestDifference(image, other), 0) << scale << ' ' << shift;
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
    EXPECT_TRUE(left.mRed == 255 && left.mGreen == 0) << int{left.mRed} << ' ' << int{left.mGreen};
    EXPECT_NEAR(left.mAlpha, 128, 15);
    EXPECT_NEAR(image.row(3)[9].mRed, 128, 2);
    EXPECT_EQ(image.row(3)[9].mAlpha, 255);
}
