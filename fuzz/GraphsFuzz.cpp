// Graphs and grids: any values, any rectangles, any surfaces.

#include "ByteReader.h"
#include "Check.h"
#include "CheckedPrimitives.h"
#include "core/HWcounterThread.h"
#include "drawers/FixedGraphicDrawer.h"
#include "drawers/GraphicDrawer.h"
#include "gui/WidgetsSettings.h"

#include <ostra/Ostra.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

namespace {

void place(drawer::Drawer& drawer, fuzz::ByteReader& reader) {
    drawer.mPosition = {reader.singleNumber(), reader.singleNumber()};
    drawer.mSize = {reader.singleNumber(), reader.singleNumber()};
    // The layer or the layout sets the rectangle, but the drawing in it must be finite in any case.
    fuzz::surface().isAnyRectangle = !fuzz::isFinite(drawer.mPosition) || !fuzz::isFinite(drawer.mSize);
}

void checkGrid(const drawer::GridDrawer& grid) {
    constexpr std::size_t MOST_VERTICES = 2 * 2 * 4097;
    FUZZ_CHECK(grid.mMesh->mVertices.size() <= MOST_VERTICES);
    FUZZ_CHECK(grid.mMesh->mVertices.size() % 2 == 0);
    for (const gui::Vertex& vertex : grid.mMesh->mVertices) {
        FUZZ_CHECK(std::abs(vertex.x) <= 1.0F && std::abs(vertex.y) <= 1.0001F);
    }
}

void checkScrolling(const drawer::GraphicDrawer& graph, std::uint32_t capacity) {
    FUZZ_CHECK(graph.mValues.size() == capacity);
    FUZZ_CHECK(graph.mLineMesh->mVertices.size() == capacity);
    FUZZ_CHECK(graph.mFillMesh->mVertices.size() == std::size_t{2} * capacity);
    float left = -1.0F;
    for (std::size_t i = 0; i < capacity; ++i) {
        const gui::Vertex& point = graph.mLineMesh->mVertices[i];
        FUZZ_CHECK(point.x >= left && point.x <= 1.0F);
        left = point.x;
        FUZZ_CHECK(graph.mFillMesh->mVertices[2 * i].y == point.y);
        FUZZ_CHECK(graph.mFillMesh->mVertices[2 * i + 1].y == 1.0F);
    }
}

void dump(drawer::GraphicDrawer& graph, fuzz::ByteReader& reader) {
    Ostra::FrameDump record{};
    record.values.resize(reader.upTo(12));
    graph.mValueType = static_cast<gui::WidgetValueType>(reader.flag() ? reader.word() : reader.upTo(12));
    graph.dump(record);
}

void scroll(fuzz::ByteReader& reader) {
    const std::uint32_t capacity = reader.upTo(400);
    drawer::GraphicDrawer graph(capacity, std::make_unique<fuzz::CheckedMesh>(),
                                std::make_unique<fuzz::CheckedMesh>(), std::make_unique<fuzz::CheckedRect>(),
                                std::make_unique<fuzz::CheckedGrid>(), gui::WidgetValueType::FPS);
    place(graph, reader);
    while (!reader.isEmpty()) {
        switch (reader.upTo(6)) {
            case 0:
                graph.addValue(reader.singleNumber());
                break;
            case 1: {
                const float value = reader.singleNumber();
                graph.addValue(value, reader.singleNumber());
                break;
            }
            case 2:
                graph.clear();
                break;
            case 3:
                dump(graph, reader);
                break;
            case 4:
                place(graph, reader);
                break;
            case 5:
                fuzz::surface().aspectRatio = reader.singleNumber();
                break;
            default:
                graph.draw();
                checkGrid(*graph.mGrid);
        }
    }
    graph.draw();
    checkGrid(*graph.mGrid);
    checkScrolling(graph, std::max(capacity, 1U));
}

void showCapture(fuzz::ByteReader& reader) {
    drawer::FixedGraphicDrawer graph(
        std::make_unique<fuzz::CheckedMesh>(), std::make_unique<fuzz::CheckedMesh>(),
        std::make_unique<fuzz::CheckedRect>(), std::make_unique<fuzz::CheckedGrid>(), {}, 0.0L, 0.0L);
    place(graph, reader);
    do {
        const auto start = static_cast<long double>(reader.number());
        const auto end = static_cast<long double>(reader.number());
        // Ascending or not.
        const bool isEven = reader.flag();
        std::vector<core::ShaderActivity> data;
        for (std::uint32_t i = reader.upTo(60); i > 0; --i) {
            const double time = isEven ? static_cast<double>(data.size()) : reader.number();
            data.push_back({time, reader.singleNumber()});
        }
        graph.setData(data, start, end);
        fuzz::surface().rectangles = 0;
        graph.draw();
        FUZZ_CHECK((fuzz::surface().rectangles == 0) == data.empty());
        checkGrid(*graph.mGrid);
        FUZZ_CHECK(graph.mFillMesh->mVertices.size() == 2 * graph.mLineMesh->mVertices.size());
        FUZZ_CHECK(graph.mLineMesh->mVertices.size() <= std::max(data.size(), std::size_t{2}));
        for (const gui::Vertex& vertex : graph.mFillMesh->mVertices) {
            FUZZ_CHECK(std::abs(vertex.x) <= 1.0F && std::abs(vertex.y) <= 1.0F);
        }
    } while (!reader.isEmpty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::ByteReader reader(data, size);
    const bool isScrolling = reader.flag();
    fuzz::surface() = {};
    fuzz::surface().aspectRatio = reader.singleNumber();
    if (isScrolling) {
        scroll(reader);
    } else {
        showCapture(reader);
    }
    return 0;
}
