// The primitives that a layer supplies for its graphics API. These draw nothing and print what they are
// given.
#pragma once
#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"

#include <cstdio>
#include <memory>

constexpr glm::vec2 SURFACE{1480.0F, 720.0F};  // pixels; a real layer asks its API in every frame

inline void say(const char* what, const drawer::Drawer& it) {
    std::printf("%s at %.3f, %.3f\n", what, it.mPosition.x, it.mPosition.y);
}

class Mesh : public drawer::MeshDrawer {
public:
    explicit Mesh(const char* topology) : mTopology(topology) {}
    void draw() override { say(mTopology, *this); }
    void clear() override { mVertices.clear(); }
    const char* mTopology;
};

class Rect : public drawer::RectDrawer {
public:
    void draw() override { say("rectangle", *this); }
};

class Grid : public drawer::GridDrawer {
public:
    using GridDrawer::GridDrawer;
    float getAspectRatio() override { return SURFACE.y / SURFACE.x; }
};

class Text : public drawer::TextDrawer {
public:
    /// Maps the box's local coordinates (-1..1, y down) to clip space (-1..1, y up).
    glm::mat4 getTransform(const glm::vec2& size, const glm::vec2& position,
                           const glm::vec3& shift) override {
        say(("text \"" + mText + '"').c_str(), *this);
        const glm::vec2 middle = (position + 0.5F * size) * glm::vec2(2.0F, -2.0F) + glm::vec2(-1.0F, 1.0F);
        return {{size.x, 0, 0, 0}, {0, -size.y, 0, 0}, {0, 0, 1, 0}, {glm::vec3(middle, 0.0F) + shift, 1.0F}};
    }
    void drawGlyph(const gui::Glyph&, const glm::mat4& toSurface, const glm::vec4&, char symbol) override {
        std::printf("glyph %c at %.3f, %.3f\n", symbol, toSurface[3].x, toSurface[3].y);
    }
    float getAspectRatio() override { return SURFACE.y / SURFACE.x; }
    float getScreenHeight() override { return SURFACE.y; }
};
