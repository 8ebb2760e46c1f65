#include "drawlist/Batch.h"

#include <algorithm>

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
            box = {std::min(box.mLeft, vertex.x), std::min(box.mTop, vertex.y),
                   std::max(box.mRight, vertex.x), std::max(box.mBottom, vertex.y)};
        }
        EXPECT_EQ(box.mLeft, triangle.expected.mLeft);
        EXPECT_EQ(box.mTop, triangle.expected.mTop);
        EXPECT_EQ(box.mRight, triangle.expected.mRight);
        EXPECT_EQ(box.mBottom, triangle.expected.mBottom);
    }
}

}  // namespace
