#include "software/SoftwareFactory.h"

#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "software/Surface.h"

#include <glm/vec4.hpp>

#include <algorithm>
#include <array>
#include <memory>
#include <tuple>
#include <utility>
#include <vector>

using scene::Topology;
using software::Image;
using software::Pixel;
using software::SoftwareFactory;
using software::Surface;

namespace {

constexpr glm::vec4 WHITE(1.0F);

/// The pixels something was drawn on, of at least this alpha: left, top, right and bottom (exclusive).
using Extent = std::array<std::size_t, 4>;
constexpr Extent NOWHERE = {0, 0, 0, 0};

Extent extentOf(const Image& image, int alpha = 1) {
    Extent extent{image.mWidth, image.mHeight, 0, 0};
    for (std::size_t y = 0; y < image.mHeight; ++y) {
        for (std::size_t x = 0; x < image.mWidth; ++x) {
            if (image.row(y)[x].mAlpha >= alpha) {
                extent = {std::min(extent[0], x), std::min(extent[1], y), std::max(extent[2], x + 1),
                          std::max(extent[3], y + 1)};
            }
        }
    }
    return extent[2] == 0 ? NOWHERE : extent;
}

template <typename Drawer>
void drawAt(Drawer& drawer, const glm::vec2& position, const glm::vec2& size,
            const glm::vec3& translation = glm::vec3(0.0F)) {
    drawer.mPosition = position;
    drawer.mSize = size;
    drawer.mTranslation = translation;
    drawer.draw();
}

std::unique_ptr<drawer::MeshDrawer> makeMesh(Surface& surface, Topology topology,
                                             std::vector<gui::Vertex> vertices) {
    std::unique_ptr<drawer::MeshDrawer> mesh = SoftwareFactory(surface).createMesh(topology);
    mesh->mColor = WHITE;
    mesh->mVertices = std::move(vertices);
    return mesh;
}

std::unique_ptr<drawer::RectDrawer> makeRect(Surface& surface) {
    std::unique_ptr<drawer::RectDrawer> rect = SoftwareFactory(surface).createRect();
    rect->mColor = WHITE;
    return rect;
}

std::unique_ptr<drawer::TextDrawer> makeText(Surface& surface, const char* characters) {
    std::unique_ptr<drawer::TextDrawer> text = SoftwareFactory(surface).createText();
    text->setText(characters);
    text->setTextColor(WHITE);
    return text;
}

const std::vector<gui::Vertex> SQUARE = {{-1.0F, -1.0F}, {-1.0F, 1.0F}, {1.0F, -1.0F}, {1.0F, 1.0F}};

// Each primitive fills the same rectangle, whatever the surface's shape and the translation.
TEST(Software, PrimitivesShareOneMapping) {
    const struct {
        glm::uvec2 mSize;
        glm::vec3 mTranslation;
        Extent mExtent;
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
        Surface surface(place.mSize.x, place.mSize.y);
        SoftwareFactory factory(surface);
        const auto mesh = makeMesh(surface, Topology::TRIANGLE_STRIP, SQUARE);
        const auto rect = makeRect(surface);
        const auto thumbnail = factory.createThumbnail();
        surface.mImage.fill({1, 2, 3, 255});
        surface.beginOverlay();
        for (drawer::Drawer* drawer : {static_cast<drawer::Drawer*>(rect.get()),
                                       static_cast<drawer::Drawer*>(mesh.get()), thumbnail.get()}) {
            surface.mImage.fill(Pixel());
            drawAt(*drawer, {0.25F, 0.5F}, {0.5F, 0.25F}, place.mTranslation);
            EXPECT_EQ(extentOf(surface.mImage, 128), place.mExtent);
        }
        const auto [left, top, right, bottom] = place.mExtent;
        EXPECT_TRUE(right == 0 ||
                    (surface.mImage.row((top + bottom) / 2)[(left + right) / 2] == Pixel{1, 2, 3, 255}))
            << "not the picture from before the overlay";
    }
}

TEST(Software, SmallestSurfacesAreDrawnOn) {
    for (const auto& size : {glm::uvec2(0, 0), glm::uvec2(0, 5), glm::uvec2(1, 1), glm::uvec2(2, 900)}) {
        Surface surface(size.x, size.y);
        SoftwareFactory factory(surface);
        std::vector<std::unique_ptr<drawer::Drawer>> drawers;
        drawers.push_back(factory.createThumbnail());
        drawers.push_back(makeRect(surface));
        for (const Topology topology : {Topology::TRIANGLE_STRIP, Topology::LINE_STRIP, Topology::LINES}) {
            drawers.push_back(makeMesh(surface, topology, SQUARE));
        }
        drawers.push_back(factory.createGrid(factory.createMesh(Topology::LINES)));
        drawers.push_back(makeText(surface, "FPS 60"));
        surface.beginOverlay();
        for (const auto& drawer : drawers) {
            drawAt(*drawer, {0.0F, 0.0F}, {1.0F, 1.0F});
        }
        for (const Pixel& pixel : surface.mImage.mPixels) {
            EXPECT_TRUE((pixel == Pixel{255, 255, 255, 255})) << size.x << ' ' << size.y;
        }
    }
}

}  // namespace
