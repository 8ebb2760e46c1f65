#include "doubles/RecordingPrimitives.h"
#include "drawers/FixedGraphicDrawer.h"
#include "drawers/GraphicDrawer.h"

#include <gmock/gmock.h>
#include <ostra/Ostra.h>

namespace {

using core::ShaderActivity;
using doubles::RecordingMesh;
using testing::ElementsAre;

/// A graph that moves, of three samples.
std::unique_ptr<drawer::GraphicDrawer> makeGraph(int slot = 11) {
    return std::make_unique<drawer::GraphicDrawer>(
        3, std::make_unique<RecordingMesh>("fill"), std::make_unique<RecordingMesh>("line"),
        std::make_unique<doubles::RecordingRect>(),
        std::make_unique<doubles::RecordingGrid>(std::make_unique<RecordingMesh>("grid")),
        static_cast<gui::WidgetValueType>(slot));
}

TEST(Graph, ScalesToItsMaximum) {
    const auto graph = makeGraph();
    const auto expectHeights = [&graph](const std::vector<float>& expected) {
        graph->recalculateMesh();
        for (std::size_t i = 0; i < 3; ++i) {
            const float height = graph->mLineMesh->mVertices.at(i).y;
            EXPECT_NEAR(height, expected[i], 1e-4F) << i;
            EXPECT_EQ(graph->mFillMesh->mVertices.at(2 * i).y, height) << i;
        }
    };
    expectHeights({1.0F, 1.0F, 1.0F});
    graph->addValue(50.0F);
    graph->addValue(100.0F);
    expectHeights({0.98F, 0.0F, -1.0F});  // 0 is drawn as 1
    // An explicit maximum may shrink and clips only the new value; what is negative is below the bottom edge.
    graph->addValue(150.0F, 100.0F);
    graph->addValue(20.0F, 10.0F);
    graph->addValue(-5.0F, 10.0F);
    expectHeights({-19.0F, -1.0F, 2.0F});
    graph->addValue(7.0F);
    graph->clear();
    EXPECT_THAT(graph->mValues, ElementsAre(0.0F, 0.0F, 7.0F)) << "the newest sample is kept";
    EXPECT_EQ(graph->mMaxValue, 7.0F);
}

TEST(Graph, DumpsItsNewestSampleInTheEncodingOfItsSlot) {
    const auto dumpOf = [](int slot, float value) {
        const auto graph = makeGraph(slot);
        graph->addValue(value, 1e30F);
        Ostra::FrameDump frame{};
        frame.values.resize(12);
        graph->dump(frame);
        return frame.values[static_cast<std::size_t>(slot)];
    };
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
    const std::tuple<int, float, std::uint64_t> integers[] = {
        {5, 585.7F, 585}, {7, -3.0F, 0}, {8, notANumber, 0}, {10, 1e30F, UINT64_MAX}, {11, 7.0F, 0}};
    for (const auto& [slot, value, integer] : integers) {
        EXPECT_EQ(dumpOf(slot, value).intValue, integer) << value;
    }
    EXPECT_EQ(dumpOf(4, 59.94F).floatValue, 59.94F);
}

TEST(ActivityGraph, StretchesTheSelectedSamplesOverItsWidth) {
    const struct {
        std::vector<ShaderActivity> samples;
        long double start, end;
        std::vector<gui::Vertex> line;
    } cases[] = {{{{10, 0.0F}, {20, 0.25F}, {30, 1.5F}, {40, 0.0F}}, 15, 35, {{-1.0F, 0.5F}, {1.0F, -1.0F}}},
                 {{{10, 0.5F}, {20, 0.5F}}, 20, 10, {}},
                 {{{5, 0.5F}}, 0, 10, {{-1.0F, 0.0F}, {1.0F, 0.0F}}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        const auto mesh = [](const char* name) { return std::make_unique<RecordingMesh>(name); };
        const drawer::FixedGraphicDrawer graph(mesh("fill"), mesh("line"), nullptr, nullptr, c.samples,
                                               c.start, c.end);
        ASSERT_EQ(graph.mLineMesh->mVertices.size(), c.line.size());
        for (std::size_t i = 0; i < c.line.size(); ++i) {
            EXPECT_FLOAT_EQ(graph.mLineMesh->mVertices[i].x, c.line[i].x);
            EXPECT_FLOAT_EQ(graph.mLineMesh->mVertices[i].y, c.line[i].y);
        }
    }
}

}  // namespace
