#include "drawers/GraphicDrawer.h"

#include "gui/WidgetsSettings.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace drawer {

namespace {

/// Samples with an even index are raised by this much.
constexpr float EVEN_SAMPLE_LIFT = 0.00004F;

constexpr float BOTTOM = 1.0F;

/// How the table encodes a float; all other values are whole numbers.
constexpr std::uint32_t FRACTION = 1;

/// Heights are computed in batches, separately from the vertices, because compilers vectorise such a loop.
constexpr std::size_t BATCH = 32;

float sampleX(std::uint32_t index, std::uint32_t capacity) {
    if (capacity == 1) {
        return -1.0F;
    }
    return -1.0F + static_cast<float>(index) * 2.0F / static_cast<float>(capacity - 1);
}

float liftOf(std::size_t index) {
    return index % 2 == 0 ? EVEN_SAMPLE_LIFT : 0.0F;
}

/// The height of a sample before the lift.
float heightOf(float sample, float maxValue) {
    const float value = sample == 0.0F ? 1.0F : sample;
    const float y = 2.0F * (1.0F - value / maxValue) - 1.0F;
    return std::abs(y) <= std::numeric_limits<float>::max() ? y : BOTTOM;
}

std::uint64_t toUint64(float value) {
    constexpr float LIMIT = 18446744073709551616.0F;  // 2^64
    if (value >= LIMIT) {
        return std::numeric_limits<std::uint64_t>::max();
    }
    return value > 0.0F ? static_cast<std::uint64_t>(value) : 0;
}

}  // namespace

GraphicDrawer::GraphicDrawer(unsigned int capacity, std::unique_ptr<MeshDrawer> fill,
                             std::unique_ptr<MeshDrawer> line, std::unique_ptr<RectDrawer> background,
                             std::unique_ptr<GridDrawer> grid, gui::WidgetValueType valueType)
    : mFillMesh(std::move(fill)),
      mLineMesh(std::move(line)),
      mBackground(std::move(background)),
      mGrid(std::move(grid)),
      mCapacity(std::max(capacity, 1U)),
      mValues(mCapacity) {
    mValueType = valueType;
    mFillMesh->mVertices.reserve(std::size_t{2} * mCapacity);
    mLineMesh->mVertices.reserve(mCapacity);
    for (std::uint32_t i = 0; i < mCapacity; ++i) {
        const gui::Vertex vertex{sampleX(i, mCapacity), BOTTOM};
        mFillMesh->mVertices.insert(mFillMesh->mVertices.end(), 2, vertex);
        mLineMesh->mVertices.push_back(vertex);
    }
}

GraphicDrawer::~GraphicDrawer() = default;

void GraphicDrawer::draw() {
    drawBackground();
    drawGrid();
    drawGraphic();
}

void GraphicDrawer::dump(Ostra::FrameDump& frameDump) {
    const auto slot = static_cast<std::size_t>(mValueType);
    if (mValueType == gui::WidgetValueType::NONE || slot >= gui::gWidgetsMeta.size() ||
        slot >= frameDump.values.size()) {
        return;
    }
    const float newest = mValues.back();
    if (gui::gWidgetsMeta[slot].valueType == FRACTION) {
        frameDump.values[slot].floatValue = newest;
    } else {
        frameDump.values[slot].intValue = toUint64(newest);
    }
}

void GraphicDrawer::clear() {
    std::fill(mValues.begin(), mValues.end() - 1, 0.0F);
    mMaxValue = mValues.back();
}

void GraphicDrawer::addValue(float value) {
    // A NaN maximum, which clear() leaves after a NaN sample, would never be exceeded.
    if (value > mMaxValue || std::isnan(mMaxValue)) {
        mMaxValue = value;
    }
    std::move(mValues.begin() + 1, mValues.end(), mValues.begin());
    mValues.back() = value;
}

void GraphicDrawer::addValue(float value, float maxValue) {
    mMaxValue = maxValue;
    std::move(mValues.begin() + 1, mValues.end(), mValues.begin());
    mValues.back() = value > maxValue ? maxValue : value;
}

void GraphicDrawer::setColor(const glm::vec4& color) {
    mFillMesh->mColor = color;
    mLineMesh->mColor = glm::vec4(color.r, color.g, color.b, 1.0F);
}

void GraphicDrawer::drawBackground() {
    mBackground->mSize = mSize;
    mBackground->mPosition = mPosition;
    mBackground->draw();
}

void GraphicDrawer::drawGrid() {
    mGrid->mSize = mSize;
    mGrid->mPosition = mPosition;
    mGrid->draw();
}

void GraphicDrawer::drawGraphic() {
    recalculateMesh();
    for (MeshDrawer* const mesh : {mFillMesh.get(), mLineMesh.get()}) {
        mesh->mSize = mSize;
        mesh->mPosition = mPosition;
        mesh->draw();
    }
}

void GraphicDrawer::recalculateMesh() {
    const std::size_t count = mValues.size();
    const float* const samples = mValues.data();
    gui::Vertex* const line = mLineMesh->mVertices.data();
    gui::Vertex* const fill = mFillMesh->mVertices.data();
    const auto setHeight = [line, fill](std::size_t i, float y) {
        const float lifted = y - liftOf(i);
        line[i].y = lifted;
        fill[2 * i].y = lifted;
    };

    if (mMaxValue == 0.0F) {
        for (std::size_t i = 0; i < count; ++i) {
            setHeight(i, BOTTOM);
        }
        return;
    }
    const float maxValue = mMaxValue;
    std::size_t first = 0;
    for (; first + BATCH <= count; first += BATCH) {
        float heights[BATCH];
        for (std::size_t i = 0; i < BATCH; ++i) {
            heights[i] = heightOf(samples[first + i], maxValue);
        }
        for (std::size_t i = 0; i < BATCH; ++i) {
            setHeight(first + i, heights[i]);
        }
    }
    for (; first < count; ++first) {
        setHeight(first, heightOf(samples[first], maxValue));
    }
}

}  // namespace drawer
