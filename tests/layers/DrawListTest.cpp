#include "drawlist/Batch.h"
#include "drawlist/FillTessellator.h"
#include "drawlist/StrokeTessellator.h"

#include <algorithm>
#include <random>
#include <vector>

namespace {

// The smallest box around a triangle may meet the clip where the triangle passes by its corner.
TEST(Batch, TrianglesAreCutToTheClip) {
    const struct {
        glm::vec2 corners[3];
        raster::Box expected;
    } cases[] = {
        {{{2.0F, 1.0F}, {4.0F, 1.0F}, {2.0F, 2.0F}}, {2.0F, 1.0F, 4.0F, 2.0F}},
        {{{-20.0F, -20.0F}, {50.0F, 0.0F}, {0.0F, 50.0F}}, {0.0F, 0.0F, 10.0F, 3.0F}},
        {{{-5.0F, 4.0F}, {4.0F, -5.0F}, {-6.0F, -6.0F}}, {}},
        {{{15.0F, 4.0F}, {6.0F, -5.0F}, {16.0F, -6.0F}}, {}},
    };
    for (const auto& triangle : cases) {
        SCOPED_TRACE(&triangle - cases);
        drawlist::Batch batch;
        batch.begin({0, 0, 10, 3});
        const auto& [a, b, c] = triangle.corners;
        batch.addTriangle({a, 1.0F}, {b, 1.0F}, {c, 1.0F}, drawlist::Paint(glm::vec4(1.0F)),
                          drawlist::Clip(batch.clip()));
        raster::Box box = batch.vertexCount() == 0 ? raster::Box() : raster::Box{1e9F, 1e9F, -1e9F, -1e9F};
        for (std::size_t i = 0; i < batch.vertexCount(); ++i) {
            const drawlist::Vertex& vertex = batch.vertices(drawlist::Batch::Part::REST)[i];
            box = {std::min(box.left, vertex.x), std::min(box.top, vertex.y), std::max(box.right, vertex.x),
                   std::max(box.bottom, vertex.y)};
        }
        EXPECT_EQ(box.left, triangle.expected.left);
        EXPECT_EQ(box.top, triangle.expected.top);
        EXPECT_EQ(box.right, triangle.expected.right);
        EXPECT_EQ(box.bottom, triangle.expected.bottom);
    }
}

// Jagged graphs of which much lies outside, also just outside, of what they are cut to.
TEST(Batch, GraphsStayInsideTheClip) {
    std::minstd_rand dice(1);
    std::uniform_real_distribution<float> height(-30.0F, 60.0F);
    std::uniform_int_distribution<int> edge(0, 40);
    drawlist::FillTessellator fill;
    drawlist::StrokeTessellator stroke;
    for (int round = 0; round < 2000; ++round) {
        std::vector<glm::vec2> line;
        std::vector<glm::vec2> strip;
        for (float x = 0.25F; x < 40.0F; x += 2.9F) {
            line.emplace_back(x, height(dice));
            strip.insert(strip.end(), {line.back(), {x, 38.5F}});
        }
        const int top = edge(dice);
        const raster::PixelRect clip{3, top, 39, std::min(top + edge(dice), 40)};
        const drawlist::Clip pixels(clip);
        drawlist::Batch batch;
        batch.begin({0, 0, 40, 40});
        fill.draw(batch, strip.data(), strip.size(), drawlist::Paint(glm::vec4(1.0F)), clip);
        stroke.draw(batch, line.data(), line.size(), 2.0F, drawlist::StrokePaint(glm::vec4(1.0F)), clip);
        const drawlist::Vertex* const vertices = batch.vertices(drawlist::Batch::Part::REST);
        const std::size_t count = batch.vertexCount();
        const auto outside = std::count_if(vertices, vertices + count, [&](const drawlist::Vertex& vertex) {
            constexpr float ROUNDING = 1e-4F;
            const glm::vec2 middle(0.5F * (pixels.left + pixels.right), 0.5F * (pixels.top + pixels.bottom));
            const glm::vec2 point(vertex.x, vertex.y);
            return !pixels.contains(point + ROUNDING * (middle - point));
        });
        ASSERT_EQ(outside, 0) << "in round " << round;
    }
}

}  // namespace
