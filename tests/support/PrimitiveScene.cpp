#include "support/PrimitiveScene.h"

#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"

#include <cmath>
#include <limits>

namespace support {

namespace {

constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();

template <class DrawerType>
DrawerType& add(Primitives& drawers, std::unique_ptr<DrawerType> drawer, glm::vec2 position, glm::vec2 size) {
    DrawerType& added = *drawer;
    added.mPosition = position;
    added.mSize = size;
    drawers.push_back(std::move(drawer));
    return added;
}

/// A graph that is level, rises steeply, jumps up and down, leaves its rectangle and is no number in places.
void addGraph(scene::PrimitiveFactory& factory, Primitives& drawers, glm::vec2 position, float roughness) {
    const glm::vec2 size(0.28F, 0.2F);
    auto& grid = add(drawers, factory.createGrid(factory.createMesh(scene::Topology::LINES)), position, size);
    grid.mMesh->mColor = {1.0F, 1.0F, 1.0F, 0.2F};
    auto& fill = add(drawers, factory.createMesh(scene::Topology::TRIANGLE_STRIP), position, size);
    auto& line = add(drawers, factory.createMesh(scene::Topology::LINE_STRIP), position, size);
    auto& bars = add(drawers, factory.createMesh(scene::Topology::BARS), position, size);
    bars.mColor = {0.0F, 0.7F, 0.0F, 0.4F};
    bars.mVertices = {{-1.2F, -0.313F}, {-0.771F, 0.9F}, {0.2F, 0.4F}, {0.1F, NOT_A_NUMBER}};
    fill.mColor = {0.0F, 0.52F, 1.0F, 0.5F};
    line.mColor = {0.0F, 0.52F, 1.0F, 1.0F};
    constexpr int SAMPLES = 100;
    for (int i = 0; i < SAMPLES; ++i) {
        const auto at = static_cast<float>(i);
        const float x = 2.0F * at / (SAMPLES - 1) - 1.0F;
        const float level = i < 20 ? 0.9F : 0.5F * std::sin(at * 0.1F);
        const float y = level + roughness * std::sin(at * at);
        fill.mVertices.push_back({x, y});
        fill.mVertices.push_back({x, 1.0F});
        line.mVertices.push_back({x, y});
    }
}

}  // namespace

Primitives makeScene(scene::PrimitiveFactory& factory) {
    Primitives drawers;
    add(drawers, factory.createRect(), {0.031F, 0.033F}, {0.9F, 0.57F}).mColor = {0.0F, 0.0F, 0.0F, 0.5F};
    addGraph(factory, drawers, {0.0413F, 0.1F}, 0.0F);
    addGraph(factory, drawers, {0.3417F, 0.1F}, 0.05F);
    addGraph(factory, drawers, {0.6421F, 0.1F}, 0.5F);
    const char* const texts[] = {"FPS 59.9", "CPU 43%", "gjpqy@#(16.6ms)", "SysFree 3.7GB"};
    for (int i = 0; i < 4; ++i) {
        const auto place = static_cast<float>(i);
        auto& text = add(drawers, factory.createText(), {0.04F + 0.2131F * place, 0.31F + 0.003F * place},
                         {0.17F, 0.05F - 0.006F * place});
        text.setText(texts[i]);
        text.setTextColor({1.0F, 0.45F + 0.1F * place, 0.0F, 1.0F - 0.2F * place});
    }
    add(drawers, factory.createThumbnail(), {0.0507F, 0.4F}, {0.151F, 0.151F});
    auto& over = add(drawers, factory.createRect(), {0.0611F, 0.42F}, {0.05F, 0.02F});
    over.mColor = {0.0F, 0.4F, 0.0F, 0.7F};
    return drawers;
}

void drawScene(scene::PrimitiveFactory& factory, const Primitives& drawers, bool isClipped) {
    if (isClipped) {
        factory.setClip({0.05F, 0.12F}, {0.5F, 0.21F});
    }
    for (const auto& drawer : drawers) {
        drawer->draw();
    }
    factory.clearClip();
}

}  // namespace support
