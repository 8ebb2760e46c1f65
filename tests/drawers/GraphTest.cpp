#include "doubles/RecordingPrimitives.h"
#include "drawers/FixedGraphicDrawer.h"
#include "drawers/GraphicDrawer.h"

#include <ostra/Ostra.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <tuple>
#include <vector>

namespace {

using core::ShaderActivity;
using doubles::RecordingMesh;
using testing::ElementsAre;

constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

/// A graph of either kind: what lies behind it is always the same.
template <typename Graph, typename... Rest>
std::unique_ptr<Graph> make(const Rest&... rest) {
    auto fill = std::make_unique<RecordingMesh>("fill");
    auto line = std::make_unique<RecordingMesh>("line");
    auto background = std::make_unique<doubles::RecordingRect>();
    auto grid = std::make_unique<doubles::RecordingGrid>(std::make_unique<RecordingMesh>("grid"));
    if constexpr (std::is_same_v<Graph, drawer::GraphicDrawer>) {
        return std::make_unique<Graph>(3, std::move(fill), std::move(line), std::move(background),
                                       std::move(grid), static_cast<gui::WidgetValueType>(rest)...);
    } else {
        return std::make_unique<Graph>(std::move(fill), std::move(line), std::move(background),
                                       std::move(grid), rest...);
    }
}

TEST(Graph, StartsAsAFlatLineAndMapsTheMaximumToTheTopEdge) {
    const auto graph = make<drawer::GraphicDrawer>(11);
    const std::vector<gui::Vertex>& line = graph->mLineMesh->mVertices;
    const std::vector<gui::Vertex>& fill = graph->mFillMesh->mVertices;
    const auto expectHeights = [&](std::vector<float> expected) {
        graph->recalculateMesh();
        ASSERT_EQ(line.size(), 3U);
        ASSERT_EQ(fill.size(), 6U);
        for (std::size_t i = 0; i < 3; ++i) {
            const float x = static_cast<float>(i) - 1.0F;
            EXPECT_TRUE(line[i].x == x && fill[2 * i].x == x && fill[2 * i + 1].x == x) << i;
            EXPECT_NEAR(line[i].y, expected[i], 2e-6F * std::max(1.0F, std::abs(expected[i]))) << i;
            EXPECT_TRUE(fill[2 * i].y == line[i].y && fill[2 * i + 1].y == 1.0F) << i;
        }
    };
    expectHeights({0.99996F, 1.0F, 0.99996F});
    graph->addValue(50.0F);
    graph->addValue(100.0F);
    EXPECT_THAT(graph->mValues, ElementsAre(0.0F, 50.0F, 100.0F));
    expectHeights({0.97996F, 0.0F, -1.00004F});  // 0 is drawn as 1
    graph->addValue(150.0F, 100.0F);
    EXPECT_TRUE(graph->mValues.back() == 100.0F && graph->mMaxValue == 100.0F);
    // An explicit maximum may shrink and clips only the new value; what is negative is below the bottom edge.
    graph->addValue(20.0F, 10.0F);
    graph->addValue(-5.0F, 10.0F);
    expectHeights({-19.00004F, -1.0F, 1.99996F});
}

TEST(Graph, ClearKeepsTheNewestSample) {
    const auto graph = make<drawer::GraphicDrawer>(11);
    for (const float value : {3.0F, 7.0F, 5.0F}) {
        graph->addValue(value);
    }
    graph->clear();
    EXPECT_THAT(graph->mValues, ElementsAre(0.0F, 0.0F, 5.0F));
    EXPECT_EQ(graph->mMaxValue, 5.0F);
    EXPECT_EQ(graph->mLineMesh->mVertices.size(), 3U);
}

TEST(Graph, DumpsItsNewestSampleInTheEncodingOfItsSlot) {
    const auto dumpOf = [](int slot, float value) {
        const auto graph = make<drawer::GraphicDrawer>(slot);
        graph->addValue(value, 1e30F);
        Ostra::FrameDump frame{};
        frame.values.resize(12);
        graph->dump(frame);
        return frame.values[static_cast<std::size_t>(slot)];
    };
    const std::tuple<int, float, std::uint64_t> integers[] = {
        {5, 585.7F, 585},      {6, 1234.7F, 1234},      {7, -3.0F, 0}, {8, NOT_A_NUMBER, 0},
        {9, 4e9F, 4000000000}, {10, 1e30F, UINT64_MAX}, {11, 7.0F, 0}};
    for (const auto& [slot, value, integer] : integers) {
        EXPECT_EQ(dumpOf(slot, value).intValue, integer) << value;
    }
    for (const int slot : {0, 3, 4}) {
        EXPECT_EQ(dumpOf(slot, 59.94F).floatValue, 59.94F);
    }
}

TEST(Grid, HasSquareCellsOf22CanvasUnits) {
    doubles::RecordingGrid grid(std::make_unique<RecordingMesh>("grid"));
    grid.mSize = {0.5F, 0.25F};
    doubles::surface() = {200.0F, 100.0F};
    grid.recalculateGrid();
    const std::vector<gui::Vertex>& lines = grid.mMesh->mVertices;
    ASSERT_EQ(lines.size(), 2U * (16 + 4));
    for (std::size_t i = 0; i < 20; ++i) {
        const gui::Vertex first = lines[2 * i];
        const gui::Vertex second = lines[2 * i + 1];
        const float x = 0.12222222F * static_cast<float>(i + 1) - 1.0F;
        const float y = 1.0F - 0.4888889F * static_cast<float>(i - 15);
        EXPECT_NEAR(first.x, i < 16 ? x : -1.0F, 1e-4F);
        EXPECT_NEAR(second.x, i < 16 ? x : 1.0F, 1e-4F);
        EXPECT_NEAR(first.y, i < 16 ? 1.0F : y - 0.00004F, 1e-5F);
        EXPECT_NEAR(second.y, i < 16 ? -1.0F : y, 1e-5F);
    }
    grid.mSize = {0.1F, 0.1F};
    grid.draw();
    EXPECT_EQ(lines.size(), 40U) << "rebuilt only when the surface's shape changes";
    doubles::surface() = {100.0F, 200.0F};
    grid.draw();
    EXPECT_NE(lines.size(), 40U);
}

TEST(ActivityGraph, StretchesTheSelectedSamplesOverItsWidth) {
    const struct {
        std::vector<ShaderActivity> samples;
        long double start, end;
        std::vector<float> x, y;
    } cases[] = {
        {{{10, 0.0F}, {20, 0.25F}, {30, 1.0F}, {40, 0.0F}}, 15, 35, {-1, 1}, {0.5F, -1.0F}},
        {{{0, 1.5F}, {1, -0.2F}, {4, 0.5F}}, 0, 4, {-1, -0.5F, 1}, {-1, 1, 0}},
        {{{10, 0.5F}, {20, 0.5F}}, 30, 40, {}, {}},
        {{{10, 0.5F}, {20, 0.5F}}, 12, 18, {}, {}},
        {{{10, 0.5F}, {20, 0.5F}}, 20, 10, {}, {}},
        {{{5, 0.5F}}, 0, 10, {-1, 1}, {0, 0}},
    };
    for (const auto& c : cases) {
        const auto graph = make<drawer::FixedGraphicDrawer>(c.samples, c.start, c.end);
        ASSERT_EQ(graph->mLineMesh->mVertices.size(), c.x.size());
        ASSERT_EQ(graph->mFillMesh->mVertices.size(), 2 * c.x.size());
        for (std::size_t i = 0; i < c.x.size(); ++i) {
            EXPECT_FLOAT_EQ(graph->mLineMesh->mVertices[i].x, c.x[i]);
            EXPECT_FLOAT_EQ(graph->mLineMesh->mVertices[i].y, c.y[i]);
            EXPECT_FLOAT_EQ(graph->mFillMesh->mVertices[2 * i].y, c.y[i]);
            EXPECT_FLOAT_EQ(graph->mFillMesh->mVertices[2 * i + 1].x, c.x[i]);
            EXPECT_FLOAT_EQ(graph->mFillMesh->mVertices[2 * i + 1].y, 1.0F);
        }
        doubles::drawCalls().clear();
        graph->draw();
        EXPECT_EQ(doubles::drawCalls().size(), c.x.empty() ? 2U : 4U);
    }
}

}  // namespace
