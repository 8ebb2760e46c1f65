#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"

#include <algorithm>
#include <array>
#include <glm/vec4.hpp>
#include <memory>
#include <utility>
#include <vector>

using scene::Topology;
using software::Image;
using software::Pixel;
using software::SoftwareFactory;
using software::Surface;

namespace {

/// The pixels that are covered for the most part: left, top, right and bottom (exclusive).
using Extent = std::array<std::size_t, 4>;
constexpr Extent NOWHERE = {0, 0, 0, 0};

Extent extentOf(const Image& image) {
    Extent extent{image.mWidth, image.mHeight, 0, 0};
    for (std::size_t y = 0; y < image.mHeight; ++y) {
        for (std::size_t x = 0; x < image.mWidth; ++x) {
            if (image.row(y)[x].alpha >= 128) {
                extent = {std::min(extent[0], x), std::min(extent[1], y), std::max(extent[2], x + 1),
                          std::max(extent[3], y + 1)};
            }
        }
    }
    return extent[2] == 0 ? NOWHERE : extent;
}

const std::vector<gui::Vertex> SQUARE = {{-1.0F, -1.0F}, {-1.0F, 1.0F}, {1.0F, -1.0F}, {1.0F, 1.0F}};

std::unique_ptr<drawer::MeshDrawer> makeMesh(SoftwareFactory& factory, Topology topology) {
    std::unique_ptr<drawer::MeshDrawer> mesh = factory.createMesh(topology);
    mesh->mColor = glm::vec4(1.0F);
    mesh->mVertices = SQUARE;
    return mesh;
}

std::unique_ptr<drawer::RectDrawer> makeRect(SoftwareFactory& factory) {
    std::unique_ptr<drawer::RectDrawer> rect = factory.createRect();
    rect->mColor = glm::vec4(1.0F);
    return rect;
}

// Each primitive fills the same rectangle, whatever the surface's shape and the translation.
TEST(Software, PrimitivesShareOneMapping) {
    const struct {
        glm::uvec2 size;
        glm::vec3 translation;
        Extent extent;
    } cases[] = {
        {{740, 360}, glm::vec3(0.0F), {185, 180, 555, 270}},
        {{360, 740}, glm::vec3(0.0F), {90, 370, 270, 555}},
        {{400, 200}, {0.5F, 0.25F, 0.0F}, {200, 75, 400, 125}},  // right, up
        {{200, 400}, {-1.0F, -0.5F, 0.0F}, {0, 300, 50, 400}},   // half off the left edge
        {{101, 60}, glm::vec3(0.0F), {25, 30, 76, 45}},
        {{400, 200}, {9.0F, 0.0F, 0.0F}, NOWHERE},
    };
    for (const auto& place : cases) {
        SCOPED_TRACE(&place - cases);
        Surface surface(place.size.x, place.size.y);
        SoftwareFactory factory(surface);
        std::unique_ptr<drawer::Drawer> drawers[] = {
            makeRect(factory), makeMesh(factory, Topology::TRIANGLE_STRIP), factory.createThumbnail()};
        surface.mImage.fill({1, 2, 3, 255});
        surface.beginOverlay();
        for (const auto& drawer : drawers) {
            surface.mImage.fill(Pixel());
            drawer->mPosition = {0.25F, 0.5F};
            drawer->mSize = {0.5F, 0.25F};
            drawer->mTranslation = place.translation;
            drawer->draw();
            EXPECT_EQ(extentOf(surface.mImage), place.extent);
        }
        const auto [left, top, right, bottom] = place.extent;
        EXPECT_TRUE(right == 0 ||
                    (surface.mImage.row((top + bottom) / 2)[(left + right) / 2] == Pixel{1, 2, 3, 255}))
            << "not the picture from before the overlay";
    }
}

TEST(Software, SmallestSurfacesAreDrawnOn) {
    for (const auto& size : {glm::uvec2(0, 0), glm::uvec2(0, 5), glm::uvec2(1, 1), glm::uvec2(2, 900)}) {
        Surface surface(size.x, size.y);
        SoftwareFactory factory(surface);
        std::unique_ptr<drawer::TextDrawer> text = factory.createText();
        text->setText("FPS 60");
        std::unique_ptr<drawer::Drawer> drawers[] = {factory.createThumbnail(),
                                                     makeRect(factory),
                                                     makeMesh(factory, Topology::TRIANGLE_STRIP),
                                                     makeMesh(factory, Topology::LINE_STRIP),
                                                     makeMesh(factory, Topology::LINES),
                                                     makeMesh(factory, Topology::BARS),
                                                     factory.createGrid(factory.createMesh(Topology::LINES)),
                                                     std::move(text)};
        surface.beginOverlay();
        for (const auto& drawer : drawers) {
            drawer->mSize = {1.0F, 1.0F};
            drawer->draw();
        }
        for (const Pixel& pixel : surface.mImage.mPixels) {
            EXPECT_TRUE((pixel == Pixel{255, 255, 255, 255})) << size.x << ' ' << size.y;
        }
    }
}

}  // namespace
