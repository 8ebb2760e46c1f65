#include "doubles/RecordingPrimitives.h"
#include "drawers/FixedGraphicDrawer.h"
#include "drawers/GraphicDrawer.h"

#include <ostra/Ostra.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

namespace {

using core::ShaderActivity;
using doubles::RecordingGrid;
using doubles::RecordingMesh;
using doubles::RecordingRect;
using testing::ElementsAre;

constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
constexpr float INFINITE = std::numeric_limits<float>::infinity();

template <typename Graph, typename... Rest>
std::unique_ptr<Graph> makeFixed(Rest&&... rest) {
    return std::make_unique<Graph>(std::make_unique<RecordingMesh>("fill"),
                                   std::make_unique<RecordingMesh>("line"), std::make_unique<RecordingRect>(),
                                   std::make_unique<RecordingGrid>(), std::forward<Rest>(rest)...);
}

std::unique_ptr<drawer::GraphicDrawer> makeGraph(unsigned capacity, int valueType = 11) {
    return std::make_unique<drawer::GraphicDrawer>(
        capacity, std::make_unique<RecordingMesh>("fill"), std::make_unique<RecordingMesh>("line"),
        std::make_unique<RecordingRect>(), std::make_unique<RecordingGrid>(),
        static_cast<gui::WidgetValueType>(valueType));
}

std::vector<float> heights(const drawer::MeshDrawer& mesh) {
    std::vector<float> y;
    for (const gui::Vertex& vertex : mesh.mVertices) {
        y.push_back(vertex.y);
    }
    return y;
}

TEST(Graph, StartsAsAFlatLineOnTheBottomEdge) {
    const auto graph = makeGraph(5);
    ASSERT_EQ(graph->mLineMesh->mVertices.size(), 5U);
    ASSERT_EQ(graph->mFillMesh->mVertices.size(), 10U);
    graph->recalculateMesh();
    for (std::size_t i = 0; i < 5; ++i) {
        const float x = -1.0F + static_cast<float>(i) * 2.0F / 4.0F;
        EXPECT_FLOAT_EQ(graph->mLineMesh->mVertices[i].x, x);
        EXPECT_FLOAT_EQ(graph->mFillMesh->mVertices[2 * i].x, x);
        EXPECT_FLOAT_EQ(graph->mFillMesh->mVertices[2 * i + 1].x, x);
        EXPECT_FLOAT_EQ(graph->mLineMesh->mVertices[i].y, i % 2 == 0 ? 0.99996F : 1.0F);
    }
}

TEST(Graph, MapsTheMaximumToTheTopEdge) {
    const auto graph = makeGraph(3);
    graph->addValue(50.0F);
    graph->addValue(100.0F);
    EXPECT_THAT(graph->mValues, ElementsAre(0.0F, 50.0F, 100.0F));
    graph->recalculateMesh();
    const std::vector<float> y = heights(*graph->mLineMesh);
    EXPECT_NEAR(y[0], 0.97996F, 1e-5F) << "0 is drawn as 1";
    EXPECT_NEAR(y[1], 0.0F, 1e-6F);
    EXPECT_NEAR(y[2], -1.00004F, 1e-6F);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(graph->mFillMesh->mVertices[2 * i].y, y[i]);
        EXPECT_EQ(graph->mFillMesh->mVertices[2 * i + 1].y, 1.0F);
    }
}

TEST(Graph, AnExplicitMaximumMayShrinkAndClipsOnlyTheNewValue) {
    const auto graph = makeGraph(3);
    graph->addValue(150.0F, 100.0F);
    EXPECT_EQ(graph->mValues.back(), 100.0F);
    EXPECT_EQ(graph->mMaxValue, 100.0F);
    graph->addValue(20.0F, 10.0F);
    graph->recalculateMesh();
    EXPECT_NEAR(heights(*graph->mLineMesh)[1], -19.0F, 0.001F);
    graph->addValue(-5.0F, 10.0F);
    graph->recalculateMesh();
    EXPECT_NEAR(heights(*graph->mLineMesh)[2], 2.0F, 0.001F) << "below the bottom edge";
}

TEST(Graph, ClearKeepsTheNewestSample) {
    const auto graph = makeGraph(3);
    for (const float value : {3.0F, 7.0F, 5.0F}) {
        graph->addValue(value);
    }
    graph->clear();
    EXPECT_THAT(graph->mValues, ElementsAre(0.0F, 0.0F, 5.0F));
    EXPECT_EQ(graph->mMaxValue, 5.0F);
    EXPECT_EQ(graph->mLineMesh->mVertices.size(), 3U);
}

TEST(Graph, DrawsBackgroundGridFillAndLineInItsRectangle) {
    const auto graph = makeGraph(4);
    graph->mPosition = {0.1F, 0.2F};
    graph->mSize = {0.3F, 0.4F};
    graph->mTranslation = {9.0F, 9.0F, 9.0F};
    graph->setColor({0.1F, 0.2F, 0.3F, 0.4F});
    doubles::drawCalls().clear();
    graph->draw();
    EXPECT_THAT(doubles::drawnNames(), ElementsAre("background", "grid", "fill", "line"));
    for (const doubles::DrawCall& call : doubles::drawCalls()) {
        EXPECT_EQ(call.position, graph->mPosition);
        EXPECT_EQ(call.size, graph->mSize);
        EXPECT_EQ(call.translation, glm::vec3(0.0F));
    }
    EXPECT_EQ(doubles::drawCalls()[2].color, glm::vec4(0.1F, 0.2F, 0.3F, 0.4F));
    EXPECT_EQ(doubles::drawCalls()[3].color, glm::vec4(0.1F, 0.2F, 0.3F, 1.0F));
}

TEST(Graph, DumpsItsNewestSampleInTheEncodingOfItsSlot) {
    struct Case {
        int slot;
        float value;
        std::uint64_t asInteger;
    };
    const Case integers[] = {{5, 585.7F, 585},     {6, 1234.7F, 1234},    {7, -3.0F, 0},
                             {8, NOT_A_NUMBER, 0}, {9, 4e9F, 4000000000}, {10, 0.9F, 0}};
    for (const Case& c : integers) {
        const auto graph = makeGraph(3, c.slot);
        graph->addValue(c.value, 1e30F);
        Ostra::FrameDump frame{};
        frame.values.resize(11);
        graph->dump(frame);
        EXPECT_EQ(frame.values[static_cast<std::size_t>(c.slot)].intValue, c.asInteger) << c.value;
    }
    for (const int slot : {0, 3, 4}) {
        const auto graph = makeGraph(3, slot);
        graph->addValue(59.94F);
        Ostra::FrameDump frame{};
        frame.values.resize(11);
        graph->dump(frame);
        EXPECT_EQ(frame.values[static_cast<std::size_t>(slot)].floatValue, 59.94F);
    }
    const auto undumped = makeGraph(3);
    undumped->addValue(1.0F);
    Ostra::FrameDump frame{};
    undumped->dump(frame);
    EXPECT_TRUE(frame.values.empty());
}

TEST(Grid, HasSquareCellsOf22CanvasUnits) {
    RecordingGrid grid;
    grid.mSize = {0.5F, 0.25F};
    grid.mRatio = 0.5F;
    grid.recalculateGrid();
    const std::vector<gui::Vertex>& lines = grid.mMesh->mVertices;
    ASSERT_EQ(lines.size(), 2U * (16 + 4));
    for (std::size_t i = 0; i < 16; ++i) {
        const float x = 0.12222222F * static_cast<float>(i + 1) - 1.0F;
        EXPECT_NEAR(lines[2 * i].x, x, 1e-4F);
        EXPECT_EQ(lines[2 * i].x, lines[2 * i + 1].x);
        EXPECT_EQ(lines[2 * i].y, 1.0F);
        EXPECT_EQ(lines[2 * i + 1].y, -1.0F);
    }
    const float rows[] = {0.5111F, 0.0222F, -0.4667F, -0.9556F};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(lines[32 + 2 * i + 1].y, rows[i], 1e-3F);
        EXPECT_NEAR(lines[32 + 2 * i].y, rows[i] - 0.00004F, 1e-3F);
        EXPECT_EQ(lines[32 + 2 * i].x, -1.0F);
        EXPECT_EQ(lines[32 + 2 * i + 1].x, 1.0F);
    }
}

TEST(Grid, IsRebuiltOnlyWhenTheSurfacesShapeChanges) {
    RecordingGrid grid;
    grid.mSize = {0.5F, 0.25F};
    grid.mRatio = 0.0F;
    grid.recalculateGrid();
    EXPECT_EQ(grid.mesh().mClears, 0);
    EXPECT_TRUE(grid.mMesh->mVertices.empty());
    grid.mRatio = 0.5F;
    grid.draw();
    grid.mSize = {0.1F, 0.1F};
    grid.draw();
    EXPECT_EQ(grid.mesh().mClears, 1);
    grid.mRatio = 2.0F;
    grid.draw();
    EXPECT_EQ(grid.mesh().mClears, 2);
}

std::vector<ShaderActivity> activity(const std::vector<std::pair<double, float>>& samples) {
    std::vector<ShaderActivity> records;
    for (const auto& [time, share] : samples) {
        records.push_back({time, share});
    }
    return records;
}

TEST(ActivityGraph, StretchesTheSelectedSamplesOverItsWidth) {
    struct Case {
        std::vector<std::pair<double, float>> samples;
        long double start, end;
        std::vector<float> x;
        std::vector<float> y;
    };
    const Case cases[] = {
        {{{10, 0.0F}, {20, 0.25F}, {30, 1.0F}, {40, 0.0F}}, 15, 35, {-1, 1}, {0.5F, -1.0F}},
        {{{0, 1.5F}, {5, -0.2F}, {10, 0.5F}}, 0, 10, {-1, 0, 1}, {-1, 1, 0}},
        {{{0, 0.5F}, {1, 0.5F}, {4, 0.5F}}, 0, 4, {-1, -0.5F, 1}, {0, 0, 0}},
        {{{10, 0.5F}, {20, 0.5F}}, 30, 40, {}, {}},
        {{{10, 0.5F}, {20, 0.5F}}, 0, 5, {}, {}},
        {{{10, 0.5F}, {20, 0.5F}}, 12, 18, {}, {}},
        {{{10, 0.5F}, {20, 0.5F}}, 20, 10, {}, {}},
    };
    for (const Case& c : cases) {
        const auto graph = makeFixed<drawer::FixedGraphicDrawer>(activity(c.samples), c.start, c.end);
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

TEST(ActivityGraph, WithoutRecordsDrawsNothing) {
    const auto graph = makeFixed<drawer::FixedGraphicDrawer>(std::vector<ShaderActivity>{}, 0.0L, 1.0L);
    doubles::drawCalls().clear();
    graph->draw();
    EXPECT_TRUE(doubles::drawCalls().empty());
    graph->setData(activity({{1, 0.5F}, {2, 0.5F}}), 0, 3);
    graph->setColor({0.1F, 0.2F, 0.3F, 0.4F});
    graph->setGridColor(glm::vec4(0.5F));
    graph->setBackgroundColor(glm::vec4(0.6F));
    graph->draw();
    ASSERT_THAT(doubles::drawnNames(), ElementsAre("background", "grid", "fill", "line"));
    EXPECT_EQ(doubles::drawCalls()[0].color, glm::vec4(0.6F));
    EXPECT_EQ(doubles::drawCalls()[1].color, glm::vec4(0.5F));
    EXPECT_EQ(doubles::drawCalls()[3].color.a, 1.0F);
}

TEST(ActivityGraph, SingleInstantsAndOddNumbersStayFinite) {
    const double infinity = std::numeric_limits<double>::infinity();
    const std::vector<std::pair<double, float>> series[] = {
        {{5, 0.5F}},
        {{5, 0.5F}, {5, 0.7F}, {5, 0.1F}},
        {{0, NOT_A_NUMBER}, {5, INFINITE}, {10, -INFINITE}},
        {{-infinity, 0.5F}, {0, 0.5F}, {infinity, 0.5F}},
        {{0, 0.5F}, {1e-320, 0.5F}},
        {{-1.7e308, 0.5F}, {1.7e308, 0.5F}},
    };
    for (const auto& samples : series) {
        const auto graph = makeFixed<drawer::FixedGraphicDrawer>(
            activity(samples), -std::numeric_limits<long double>::infinity(),
            std::numeric_limits<long double>::infinity());
        EXPECT_FALSE(graph->mLineMesh->mVertices.empty());
        for (const drawer::MeshDrawer* const mesh : {graph->mLineMesh.get(), graph->mFillMesh.get()}) {
            for (const gui::Vertex& vertex : mesh->mVertices) {
                EXPECT_TRUE(std::abs(vertex.x) <= 1.0F && std::abs(vertex.y) <= 1.0F)
                    << vertex.x << "," << vertex.y;
            }
        }
    }
}

}  // namespace
