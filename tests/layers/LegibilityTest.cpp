// Contrast of what is drawn with what lies next to it, as defined for texts on screens: 4.5 to 1 is enough
// for anybody.

#include "drawers/MeshDrawer.h"
#include "drawers/TextDrawer.h"
#include "raster/Luminance.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace {

using software::Pixel;

constexpr double ENOUGH = 4.5;
constexpr std::uint32_t WIDTH = 740;
constexpr std::uint32_t HEIGHT = 360;

double luminance(const Pixel& pixel) {
    return raster::luminance(glm::vec4(pixel.red, pixel.green, pixel.blue, 255) / 255.0F);
}

double contrast(const Pixel& a, const Pixel& b) {
    const double one = luminance(a) + 0.05;
    const double other = luminance(b) + 0.05;
    return std::max(one, other) / std::min(one, other);
}

int distance(const Pixel& a, const Pixel& b) {
    return std::max({std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)});
}

/// Of the pixels that have the drawn colour, at the best side of each: in a stem of a pixel or two one
/// neighbour may belong to the stem. 0 when nothing is drawn in its colour.
double lowestContrast(const software::Image& image, const Pixel& color) {
    constexpr int ALMOST = 12;
    double lowest = std::numeric_limits<double>::max();
    bool isDrawn = false;
    for (std::size_t y = 2; y + 2 < image.mHeight; ++y) {
        for (std::size_t x = 2; x + 2 < image.mWidth; ++x) {
            const Pixel& core = image.row(y)[x];
            if (distance(core, color) <= ALMOST) {
                isDrawn = true;
                double best = 0.0;
                for (std::size_t step = 1; step <= 2; ++step) {
                    for (const Pixel* next : {&image.row(y)[x - step], &image.row(y)[x + step],
                                              &image.row(y - step)[x], &image.row(y + step)[x]}) {
                        best = std::max(best, contrast(core, *next));
                    }
                }
                lowest = std::min(lowest, best);
            }
        }
    }
    return isDrawn ? lowest : 0.0;
}

TEST(Legibility, EveryColourStandsOutOnEveryGround) {
    const Pixel colors[] = {{0, 132, 255, 255},   {255, 114, 0, 255}, {255, 255, 0, 255},
                            {255, 0, 0, 255},     {0, 255, 0, 255},   {0, 178, 0, 255},
                            {255, 255, 255, 255}, {0, 0, 0, 255},     {0, 0, 160, 255}};
    software::Surface surface(WIDTH, HEIGHT);
    software::SoftwareFactory factory(surface);
    const auto text = factory.createText();
    text->setText("GPU 8064%");
    const auto curve = factory.createMesh(scene::Topology::LINE_STRIP);
    curve->mVertices = {{-1.0F, 1.0F}, {-0.2F, 0.9F}, {0.1F, -0.8F}, {1.0F, -1.0F}};
    constexpr std::uint8_t SHADES[] = {0, 128, 255};
    for (const Pixel& color : colors) {
        text->mTextColor = curve->mColor = glm::vec4(color.red, color.green, color.blue, 255) / 255.0F;
        for (const std::uint8_t shade : SHADES) {
            for (drawer::Drawer* const drawer :
                 {static_cast<drawer::Drawer*>(text.get()), static_cast<drawer::Drawer*>(curve.get())}) {
                drawer->mPosition = {0.1F, 0.1F};
                drawer->mSize = {0.4F, 12.0F / HEIGHT};  // of the smallest surface's figures
                const Pixel ground{shade, shade, shade, 255};
                surface.mImage.fill(ground);
                drawer->draw();
                const bool isOwnGround = distance(color, ground) == 0;
                SCOPED_TRACE(testing::Message() << (drawer == curve.get() ? "curve " : "text ")
                                                << &color - colors << " on " << int{shade});
                if (isOwnGround) {  // then the outline is what shows
                    const auto stands = [&](const Pixel& pixel) { return contrast(pixel, ground) >= ENOUGH; };
                    EXPECT_TRUE(
                        std::any_of(surface.mImage.mPixels.begin(), surface.mImage.mPixels.end(), stands));
                } else {
                    EXPECT_GE(lowestContrast(surface.mImage, color), ENOUGH);
                }
            }
        }
    }
}

}  // namespace
