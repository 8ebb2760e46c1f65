#include "software/Rasterizer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <glm/common.hpp>
#include <limits>
#include <random>

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

bool isAll(const Image& image, const Pixel& pixel) {
    return std::count(image.mPixels.begin(), image.mPixels.end(), pixel) ==
           static_cast<std::ptrdiff_t>(image.mPixels.size());
}

/// One of everything, in a picture that was black.
template <std::size_t COUNT>
Image drawAll(const raster::PixelRect& clip, const std::array<glm::vec2, COUNT>& points,
              const raster::Box& box, const Paint& paint) {
    static const std::array<std::uint8_t, 64> TEXELS = [] {
        std::array<std::uint8_t, 64> texels{};
        texels.fill(200);
        return texels;
    }();
    static Rasterizer rasterizer;
    Image image = blackImage(64, 64);
    Rasterizer::fillRect(image, clip, box, paint);
    rasterizer.fillStrip(image, clip, points.data(), COUNT, paint);
    rasterizer.strokeLine(image, clip, points.data(), COUNT, 1.5F, paint);
    rasterizer.strokeSegments(image, clip, box, points.data(), COUNT, 1.0F, paint);
    rasterizer.drawGlyph(image, clip, {TEXELS.data(), 8, 8, 8}, box, paint,
                         [](int left, int) { return left - 1; });
    rasterizer.drawImage(image, clip, blackImage(3, 2), box);
    return image;
}

}  // namespace

TEST(Blend, ComposesOver) {
    const struct {
        Pixel target;
        glm::vec4 color;
        Pixel result;
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
        Pixel pixel = blend.target;
        const Paint paint = makePaint(blend.color);
        blendOver(pixel, paint.color, toAlpha(paint.alpha));
        EXPECT_TRUE(pixel == blend.result) << &blend - cases;
    }
}

// A clip shows the same as the same place of the whole picture, and nothing else.
TEST(Rasterizer, ClipsAreWindows) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> place(-20.0F, 84.0F);
    for (int round = 0; round < 200; ++round) {
        std::array<glm::vec2, 6> points;
        std::generate(points.begin(), points.end(), [&] { return glm::vec2(place(random), place(random)); });
        const glm::vec2 from = glm::min(points[0], points[1]);
        const glm::vec2 to = glm::max(points[0], points[1]);
        const raster::Box box{from.x, from.y, to.x, to.y};
        const Image whole = drawAll({0, 0, 64, 64}, points, box, HALF_WHITE);
        const Image window = drawAll({24, 24, 40, 40}, points, box, HALF_WHITE);
        for (std::size_t i = 0; i < 64 * 64; ++i) {
            const bool isInside = i % 64 >= 24 && i % 64 < 40 && i / 64 >= 24 && i / 64 < 40;
            const Pixel& expected = isInside ? whole.mPixels[i] : BLACK;
            ASSERT_NEAR(window.mPixels[i].red, expected.red, 1) << round;
        }
    }
}

TEST(Rasterizer, SurvivesAnyCoordinate) {
    const float values[] = {NOT_A_NUMBER, INF, -INF, 1e30F, -1e30F, 3e38F, -3e38F, 0.0F, 5.5F, 1e-40F};
    std::mt19937 random(3);
    const auto any = [&] { return values[random() % std::size(values)]; };
    for (int round = 0; round < 3000; ++round) {
        std::array<glm::vec2, 5> points;
        std::generate(points.begin(), points.end(), [&] { return glm::vec2(any(), any()); });
        const Image image = drawAll({0, 0, 9, 7}, points, {any(), any(), any(), any()}, WHITE);
        ASSERT_EQ(image.mPixels.back(), BLACK);
    }
    // Far larger than the picture is all of the picture, not a number is none of it.
    const std::array<glm::vec2, 3> triangle{{{-1e30F, -1e30F}, {3e30F, 0.0F}, {-1e30F, 1e30F}}};
    const raster::Box nowhere{NOT_A_NUMBER, 0.0F, 9.0F, 7.0F};
    EXPECT_TRUE(isAll(drawAll({0, 0, 64, 64}, triangle, nowhere, WHITE), {255, 255, 255, 255}));
    EXPECT_TRUE(isAll(drawAll({0, 0, 64, 64}, std::array<glm::vec2, 0>(), nowhere, WHITE), BLACK));
}
