#include "drawers/GridDrawer.h"

#include <utility>

namespace drawer {

namespace {

/// The side of a cell as a fraction of the surface's shorter side: 22/360.
constexpr float CELL = 0.06111111F;

/// The left end of a horizontal line is this much higher than its right end.
constexpr float LEFT_END_LIFT = 0.00004F;

/// The rectangle's 2 local units divided by the largest number of lines.
constexpr float SMALLEST_STEP = 2.0F / 4096.0F;

void appendVerticalLines(std::vector<gui::Vertex>& lines, float step) {
    float x = step - 1.0F;
    while (x <= 1.0F) {
        lines.push_back({x, 1.0F});
        lines.push_back({x, -1.0F});
        x += step;
    }
}

void appendHorizontalLines(std::vector<gui::Vertex>& lines, float step) {
    float y = 1.0F - step;
    while (y >= -1.0F) {
        lines.push_back({-1.0F, y - LEFT_END_LIFT});
        lines.push_back({1.0F, y});
        y -= step;
    }
}

}  // namespace

GridDrawer::GridDrawer(std::unique_ptr<MeshDrawer> mesh) : mMesh(std::move(mesh)) {}

GridDrawer::~GridDrawer() = default;

void GridDrawer::draw() {
    recalculateGrid();
    mMesh->mSize = mSize;
    mMesh->mPosition = mPosition;
    mMesh->draw();
}

void GridDrawer::recalculateGrid() {
    const float aspectRatio = getAspectRatio();
    if (aspectRatio == mAspectRatio) {
        return;
    }
    mAspectRatio = aspectRatio;
    mMesh->clear();

    // The canvas spans 2 units of clip space; which side is the shorter one depends on the surface.
    glm::vec2 step(2.0F * CELL);
    if (aspectRatio <= 1.0F) {
        step.x *= aspectRatio;
    } else {
        step.y /= aspectRatio;
    }
    step /= mSize;

    // NaN fails the comparison, and an infinite step passes the far edge at once.
    if (step.x >= SMALLEST_STEP) {
        appendVerticalLines(mMesh->mVertices, step.x);
    }
    if (step.y >= SMALLEST_STEP) {
        appendHorizontalLines(mMesh->mVertices, step.y);
    }
}

}  // namespace drawer
