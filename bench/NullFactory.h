#pragma once

#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "scene/PrimitiveFactory.h"

#include <cstddef>
#include <glm/mat4x4.hpp>
#include <memory>

namespace bench {

/// Primitives that draw nothing, on a surface of 1480 by 720 pixels. They count their calls, so that a
/// benchmark can check that the whole overlay was drawn.
class NullFactory : public scene::PrimitiveFactory {
public:
    struct Drawn {
        std::size_t meshes = 0;
        std::size_t vertices = 0;
        std::size_t rects = 0;
        std::size_t glyphs = 0;
        std::size_t texts = 0;
    };

    std::unique_ptr<drawer::MeshDrawer> createMesh(scene::Topology /*topology*/) override {
        return std::make_unique<Mesh>(drawn);
    }
    std::unique_ptr<drawer::RectDrawer> createRect() override { return std::make_unique<Rect>(drawn); }
    std::unique_ptr<drawer::GridDrawer> createGrid(std::unique_ptr<drawer::MeshDrawer> lines) override {
        return std::make_unique<Grid>(std::move(lines));
    }
    std::unique_ptr<drawer::TextDrawer> createText() override { return std::make_unique<Text>(drawn); }
    std::unique_ptr<drawer::Drawer> createThumbnail() override { return std::make_unique<Rect>(drawn); }
    glm::uvec2 getSurfaceSize() const override { return {1480, 720}; }
    void setClip(const glm::vec2& /*position*/, const glm::vec2& /*size*/) override {}
    void clearClip() override {}

    Drawn drawn;

private:
    static constexpr float ASPECT_RATIO = 720.0F / 1480.0F;

    class Mesh : public drawer::MeshDrawer {
    public:
        explicit Mesh(Drawn& drawn) : mDrawn(drawn) {}
        void draw() override {
            ++mDrawn.meshes;
            mDrawn.vertices += mVertices.size();
        }
        void clear() override { mVertices.clear(); }

    private:
        Drawn& mDrawn;
    };

    class Rect : public drawer::RectDrawer {
    public:
        explicit Rect(Drawn& drawn) : mDrawn(drawn) {}
        void draw() override { ++mDrawn.rects; }

    private:
        Drawn& mDrawn;
    };

    class Grid : public drawer::GridDrawer {
    public:
        using drawer::GridDrawer::GridDrawer;
        float getAspectRatio() override { return ASPECT_RATIO; }
    };

    class Text : public drawer::TextDrawer {
    public:
        explicit Text(Drawn& drawn) : mDrawn(drawn) {}
        void drawGlyph(const gui::Glyph& /*glyph*/, const glm::mat4& /*transform*/,
                       const glm::vec4& /*color*/, char /*symbol*/) override {
            ++mDrawn.glyphs;
        }
        glm::mat4 getTransform(const glm::vec2& size, const glm::vec2& position,
                               const glm::vec3& translation) override {
            ++mDrawn.texts;
            glm::mat4 matrix(1.0F);
            matrix[0][0] = size.x;
            matrix[1][1] = size.y;
            matrix[3] = glm::vec4(position + size, 0.0F, 1.0F) + glm::vec4(translation, 0.0F);
            return matrix;
        }
        float getAspectRatio() override { return ASPECT_RATIO; }
        float getScreenHeight() override { return 720.0F; }

    private:
        Drawn& mDrawn;
    };
};

}  // namespace bench
