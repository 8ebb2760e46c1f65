#include "drawers/FixedGraphicDrawer.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace drawer {

namespace {

constexpr float BOTTOM_EDGE = 1.0F;

// The order of the comparisons puts NaN on the left edge and on the bottom edge.

float clampX(float x) {
    return x > -1.0F ? std::min(x, 1.0F) : -1.0F;
}

float clampY(float y) {
    return y < BOTTOM_EDGE ? std::max(y, -1.0F) : BOTTOM_EDGE;
}

}  // namespace

FixedGraphicDrawer::FixedGraphicDrawer(std::unique_ptr<MeshDrawer> fill, std::unique_ptr<MeshDrawer> line,
                                       std::unique_ptr<RectDrawer> background,
                                       std::unique_ptr<GridDrawer> grid,
                                       const std::vector<core::ShaderActivity>& data, long double start,
                                       long double end)
    : mFillMesh(std::move(fill)),
      mLineMesh(std::move(line)),
      mBackground(std::move(background)),
      mGrid(std::move(grid)) {
    setData(data, start, end);
}

FixedGraphicDrawer::~FixedGraphicDrawer() = default;

void FixedGraphicDrawer::draw() {
    if (mIsEmpty) {
        return;
    }
    drawBackground();
    drawGrid();
    drawGraphic();
}

void FixedGraphicDrawer::setData(const std::vector<core::ShaderActivity>& data, long double start,
                                 long double end) {
    using core::ShaderActivity;

    mFillMesh->clear();
    mLineMesh->clear();
    mIsEmpty = data.empty();

    const auto first = std::find_if(data.begin(), data.end(),
                                    [start](const ShaderActivity& record) { return !(record.time < start); });
    const auto past =
        std::find_if(data.rbegin(), std::make_reverse_iterator(first), [end](const ShaderActivity& record) {
            return !(record.time > end);
        }).base();
    if (first == past) {
        return;
    }

    const auto count = static_cast<std::size_t>(past - first);
    mFillMesh->mVertices.reserve(2 * count);
    mLineMesh->mVertices.reserve(count);
    const auto append = [this](float x, float y) {
        mFillMesh->mVertices.push_back({x, y});
        mFillMesh->mVertices.push_back({x, BOTTOM_EDGE});
        mLineMesh->mVertices.push_back({x, y});
    };
    const auto heightOf = [](const ShaderActivity& record) { return clampY(1.0F - 2.0F * record.activity); };

    if (count == 1) {
        append(-1.0F, heightOf(*first));
        append(1.0F, heightOf(*first));
        return;
    }
    const double startTime = first->time;
    const double span = (past - 1)->time - startTime;
    const bool hasSpan = span > 0.0 && std::isfinite(span);
    std::size_t index = 0;
    for (auto record = first; record != past; ++record, ++index) {
        const double share = hasSpan ? (record->time - startTime) / span
                                     : static_cast<double>(index) / static_cast<double>(count - 1);
        append(clampX(2.0F * static_cast<float>(share) - 1.0F), heightOf(*record));
    }
}

void FixedGraphicDrawer::setColor(const glm::vec4& color) {
    mFillMesh->mColor = color;
    mLineMesh->mColor = glm::vec4(color.r, color.g, color.b, 1.0F);
}

void FixedGraphicDrawer::setGridColor(const glm::vec4& color) {
    mGrid->mMesh->mColor = color;
}

void FixedGraphicDrawer::setBackgroundColor(const glm::vec4& color) {
    mBackground->mColor = color;
}

void FixedGraphicDrawer::drawBackground() {
    mBackground->mSize = mSize;
    mBackground->mPosition = mPosition;
    mBackground->draw();
}

void FixedGraphicDrawer::drawGrid() {
    mGrid->mSize = mSize;
    mGrid->mPosition = mPosition;
    mGrid->draw();
}

void FixedGraphicDrawer::drawGraphic() {
    if (mFillMesh->mVertices.empty()) {
        return;
    }
    for (MeshDrawer* const mesh : {mFillMesh.get(), mLineMesh.get()}) {
        mesh->mSize = mSize;
        mesh->mPosition = mPosition;
        mesh->draw();
    }
}

}  // namespace drawer
