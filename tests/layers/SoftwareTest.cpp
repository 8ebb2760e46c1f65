#include "software/SoftwareFactory.h"

#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "software/Surface.h"

#include <glm/vec4.hpp>

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

using scene::Topology;
using software::Image;
using software::Pixel;
using software::SoftwareFactory;
using software::Surface;

namespace {

constexpr glm::vec4 WHITE(1.0F);

/// The pixels something was drawn on: left, top, right and bottom (exclusive); all 0 when there are none.
struct Extent {
    std::size_t mLeft = 0;
    std::size_t mTop = 0;
    std::size_t mRight = 0;
    std::size_t mBottom = 0;
};

bool operator==(const Extent& a, const Extent& b) {
    return a.mLeft == b.mLeft && a.mTop == b.mTop && a.mRight == b.mRight && a.mBottom == b.mBottom;
}

void PrintTo(const Extent& extent, std::ostream* out) {
    *out << extent.mLeft << ',' << extent.mTop << " - " << extent.mRight << ',' << extent.mBottom;
}

/// Counts pixels of at least this alpha.
Extent extentOf(const Image& image, int alpha = 1) {
    Extent extent{image.mWidth, image.mHeight, 0, 0};
    for (std::size_t y = 0; y < image.mHeight; ++y) {
        for (std::size_t x = 0; x < image.mWidth; ++x) {
            if (image.row(y)[x].mAlpha >= alpha) {
                extent = {std::min(extent.mLeft, x), std::min(extent.mTop, y), std::max(extent.mRight, x + 1),
                          std::max(extent.mBottom, y + 1)};
            }
        }
    }
    return extent.mRight == 0 ? Extent() : extent;
}

void place(drawer::Drawer& drawer, const glm::vec2& position, const glm::vec2& size,
           const glm::vec3& translation = glm::vec3(0.0F)) {
    drawer.mPosition = position;
    drawer.mSize = size;
    drawer.mTranslation = translation;
}

struct PlaceCase {
    std::uint32_t mWidth;
    std::uint32_t mHeight;
    glm::vec3 mTranslation;
    Extent mExtent;
};

class Placing : public testing::TestWithParam<PlaceCase> {
protected:
    void placeAndDraw(drawer::Drawer& drawer) {
        mSurface.mImage.fill(Pixel());
        place(drawer, {0.25F, 0.5F}, {0.5F, 0.25F}, GetParam().mTranslation);
        drawer.draw();
    }

    Surface mSurface{GetParam().mWidth, GetParam().mHeight};
    SoftwareFactory mFactory{mSurface};
};

// Each primitive fills the same rectangle, whatever the surface's shape and the translation.
TEST_P(Placing, PrimitivesShareOneMapping) {
    const std::unique_ptr<drawer::RectDrawer> rect = mFactory.createRect();
    rect->mColor = WHITE;
    placeAndDraw(*rect);
    EXPECT_EQ(extentOf(mSurface.mImage, 128), GetParam().mExtent);

    const std::unique_ptr<drawer::MeshDrawer> mesh = mFactory.createMesh(Topology::TRIANGLE_STRIP);
    mesh->mColor = WHITE;
    mesh->mVertices = {{-1.0F, -1.0F}, {-1.0F, 1.0F}, {1.0F, -1.0F}, {1.0F, 1.0F}};
    placeAndDraw(*mesh);
    EXPECT_EQ(extentOf(mSurface.mImage, 128), GetParam().mExtent);

    mSurface.mImage.fill({1, 2, 3, 255});
    const std::unique_ptr<drawer::Drawer> thumbnail = mFactory.createThumbnail();
    mSurface.beginOverlay();
    placeAndDraw(*thumbnail);
    EXPECT_EQ(extentOf(mSurface.mImage, 128), GetParam().mExtent);

    const std::unique_ptr<drawer::TextDrawer> text = mFactory.createText();
    const glm::mat4 transform = text->getTransform({0.5F, 0.25F}, {0.25F, 0.5F}, GetParam().mTranslation);
    const glm::vec4 from = transform * glm::vec4(-1.0F, -1.0F, 0.0F, 1.0F);
    const glm::vec4 to = transform * glm::vec4(1.0F, 1.0F, 0.0F, 1.0F);
    const auto width = static_cast<float>(GetParam().mWidth);
    const auto height = static_cast<float>(GetParam().mHeight);
    EXPECT_NEAR(from.x, (0.25F + GetParam().mTranslation.x / 2) * width, 1e-3);
    EXPECT_NEAR(from.y, (0.5F - GetParam().mTranslation.y / 2) * height, 1e-3);
    EXPECT_NEAR(to.x - from.x, 0.5F * width, 1e-3);
    EXPECT_NEAR(to.y - from.y, 0.25F * height, 1e-3);
    EXPECT_FLOAT_EQ(text->getAspectRatio(), height / width);
    EXPECT_FLOAT_EQ(text->getScreenHeight(), height);
    EXPECT_EQ(mFactory.getSurfaceSize(), glm::uvec2(GetParam().mWidth, GetParam().mHeight));
}

INSTANTIATE_TEST_SUITE_P(
    Surfaces, Placing,
    testing::Values(PlaceCase{740, 360, glm::vec3(0.0F), {185, 180, 555, 270}},
                    PlaceCase{360, 740, glm::vec3(0.0F), {90, 370, 270, 555}},
                    PlaceCase{400, 200, {0.5F, 0.25F, 0.0F}, {200, 75, 400, 125}},  // right, up
                    PlaceCase{200, 400, {-1.0F, -0.5F, 0.0F}, {0, 300, 50, 400}},   // half off the left edge
                    PlaceCase{101, 60, glm::vec3(0.0F), {25, 30, 76, 45}},
                    PlaceCase{400, 200, {9.0F, 0.0F, 0.0F}, {0, 0, 0, 0}}));

TEST(Software, SmallestSurfacesAreDrawnOn) {
    for (const auto& size : {glm::uvec2(0, 0), glm::uvec2(0, 5), glm::uvec2(1, 1), glm::uvec2(2, 900)}) {
        Surface surface(size.x, size.y);
        SoftwareFactory factory(surface);
        std::vector<std::unique_ptr<drawer::Drawer>> drawers;
        drawers.push_back(factory.createThumbnail());
        std::unique_ptr<drawer::RectDrawer> rect = factory.createRect();
        rect->mColor = WHITE;
        drawers.push_back(std::move(rect));
        for (const Topology topology : {Topology::TRIANGLE_STRIP, Topology::LINE_STRIP, Topology::LINES}) {
            std::unique_ptr<drawer::MeshDrawer> mesh = factory.createMesh(topology);
            mesh->mVertices = {{-1.0F, -1.0F}, {-1.0F, 1.0F}, {1.0F, -1.0F}, {1.0F, 1.0F}};
            mesh->mColor = WHITE;
            drawers.push_back(std::move(mesh));
        }
        drawers.push_back(factory.createGrid(factory.createMesh(Topology::LINES)));
        std::unique_ptr<drawer::TextDrawer> text = factory.createText();
        text->setText("FPS 60");
        text->setTextColor(WHITE);
        drawers.push_back(std::move(text));
        surface.beginOverlay();
        for (const auto& drawer : drawers) {
            place(*drawer, {0.0F, 0.0F}, {1.0F, 1.0F});
            drawer->draw();
        }
        for (const Pixel& pixel : surface.mImage.mPixels) {
            EXPECT_TRUE((pixel == Pixel{255, 255, 255, 255})) << size.x << ' ' << size.y;
        }
    }
}

TEST(Software, ClipLimitsDrawingUntilCleared) {
    Surface surface(100, 50);
    SoftwareFactory factory(surface);
    const std::unique_ptr<drawer::RectDrawer> rect = factory.createRect();
    rect->mColor = WHITE;
    place(*rect, {-1.0F, -1.0F}, {3.0F, 3.0F});
    const struct {
        glm::vec2 mPosition;
        glm::vec2 mSize;
        Extent mExtent;
    } cases[] = {{{0.1F, 0.2F}, {0.5F, 0.4F}, {10, 10, 60, 30}},
                 {{-2.0F, 0.5F}, {9.0F, 9.0F}, {0, 25, 100, 50}},
                 {{0.5F, 0.5F}, {0.0F, 0.5F}, {}},
                 {{0.5F, 0.5F}, {-0.2F, 0.5F}, {}}};
    for (const auto& clip : cases) {
        surface.mImage.fill(Pixel());
        factory.setClip(clip.mPosition, clip.mSize);
        rect->draw();
        EXPECT_EQ(extentOf(surface.mImage), clip.mExtent);
    }
    factory.clearClip();
    rect->draw();
    EXPECT_EQ(extentOf(surface.mImage), (Extent{0, 0, 100, 50}));
}

// A constant metric at its maximum or at zero runs along an edge of its graph.
TEST(Software, CurvesAlongAnEdgeShowInFullInsideTheirRectangle) {
    for (const float y : {-1.0F, 1.0F}) {
        Surface surface(740, 360);
        const std::unique_ptr<drawer::MeshDrawer> curve =
            SoftwareFactory(surface).createMesh(Topology::LINE_STRIP);
        curve->mColor = WHITE;
        curve->mVertices = {{-1.0F, y}, {0.0F, y}, {1.0F, y}};
        place(*curve, {100 / 740.0F, 50 / 360.0F}, {171 / 740.0F, 38 / 360.0F});
        curve->draw();
        const std::size_t row = y < 0.0F ? 50 : 87;
        EXPECT_EQ(extentOf(surface.mImage, 250), (Extent{100, row, 271, row + 1}));
        EXPECT_EQ(extentOf(surface.mImage), (Extent{100, row, 271, row + 1}));
    }
}

TEST(Software, GraphsNeverLeaveTheirRectangle) {
    for (const Topology topology : {Topology::TRIANGLE_STRIP, Topology::LINE_STRIP}) {
        Surface surface(740, 360);
        const std::unique_ptr<drawer::MeshDrawer> mesh = SoftwareFactory(surface).createMesh(topology);
        mesh->mColor = WHITE;
        mesh->mVertices = {{-1.0F, -19.0F}, {-1.0F, 1.0F}, {0.0F, 19.0F},
                           {0.0F, 1.0F},    {1.0F, -9.0F}, {1.0F, 1.0F}};
        place(*mesh, {100 / 740.0F, 50 / 360.0F}, {171 / 740.0F, 38 / 360.0F});
        mesh->draw();
        EXPECT_EQ(extentOf(surface.mImage), (Extent{100, 50, 271, 88}));
    }
}

// Whatever the size and place of a line: its letters end in full pixel rows, and all on the same ones.
TEST(Software, LettersStandOnOneWholeRow) {
    for (const float lineHeight : {10.0F, 12.5F, 17.0F, 23.3F, 34.0F, 51.0F}) {
        for (const float top : {20.0F, 20.3F, 20.5F, 20.8F}) {
            const auto draw = [&](const char* letter) {
                Surface surface(100, 200);
                const std::unique_ptr<drawer::TextDrawer> text = SoftwareFactory(surface).createText();
                text->setText(letter);
                text->setTextColor(WHITE);
                place(*text, {0.1F, top / 200.0F}, {0.9F, lineHeight / 200.0F});
                text->draw();
                return surface.mImage;
            };
            const Image capital = draw("H");
            const Extent extent = extentOf(capital, 8);
            ASSERT_LT(extent.mTop + 3, extent.mBottom);
            for (std::size_t x = 0; x < 100; ++x) {  // the first row of the stems is no fainter than the next
                ASSERT_NEAR(capital.row(extent.mTop)[x].mAlpha, capital.row(extent.mTop + 1)[x].mAlpha, 10);
            }
            for (const char* letter : {"0", "E", "8", "M"}) {
                const Extent other = extentOf(draw(letter), 8);
                EXPECT_EQ(other.mTop, extent.mTop) << letter << ' ' << lineHeight << ' ' << top;
                EXPECT_EQ(other.mBottom, extent.mBottom) << letter << ' ' << lineHeight << ' ' << top;
            }
            const Extent small = extentOf(draw("x"), 8);
            EXPECT_EQ(small.mBottom, extent.mBottom) << lineHeight << ' ' << top;
            EXPECT_EQ(extentOf(draw("o"), 8).mTop, small.mTop) << lineHeight << ' ' << top;
        }
    }
}

TEST(Software, ThumbnailShowsThePictureFromBeforeTheOverlay) {
    Surface surface(200, 100);
    SoftwareFactory factory(surface);
    const std::unique_ptr<drawer::RectDrawer> rect = factory.createRect();
    const std::unique_ptr<drawer::Drawer> thumbnail = factory.createThumbnail();
    rect->mColor = WHITE;
    place(*rect, {0.0F, 0.0F}, {1.0F, 1.0F});
    place(*thumbnail, {0.5F, 0.5F}, {0.2F, 0.2F});
    for (const std::uint8_t red : {std::uint8_t{200}, std::uint8_t{100}}) {
        for (std::size_t y = 0; y < 100; ++y) {
            std::fill_n(surface.mImage.row(y), 100, Pixel{red, 0, 0, 255});
            std::fill_n(surface.mImage.row(y) + 100, 100, Pixel{0, 0, red, 255});
        }
        surface.beginOverlay();
        rect->draw();
        thumbnail->draw();
        EXPECT_TRUE((surface.mImage.row(60)[110] == Pixel{red, 0, 0, 255}));
        EXPECT_TRUE((surface.mImage.row(60)[130] == Pixel{0, 0, red, 255}));
        EXPECT_TRUE((surface.mImage.row(60)[99] == Pixel{255, 255, 255, 255}));
        EXPECT_TRUE((surface.mImage.row(60)[140] == Pixel{255, 255, 255, 255}));
    }
}

}  // namespace
