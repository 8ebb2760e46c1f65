#pragma once

#include "Check.h"
#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"

#include <cmath>
#include <glm/gtc/matrix_transform.hpp>
#include <memory>
#include <utility>

namespace fuzz {

inline bool isFinite(const glm::vec2& vector) {
    return std::isfinite(vector.x) && std::isfinite(vector.y);
}

inline bool isFinite(const glm::mat4& matrix) {
    for (int column = 0; column < 4; ++column) {
        for (int row = 0; row < 4; ++row) {
            if (!std::isfinite(matrix[column][row])) {
                return false;
            }
        }
    }
    return true;
}

/// The surface of the primitives below, and how much they have drawn.
struct Surface {
    float aspectRatio = 360.0F / 740.0F;  ///< height divided by width
    float height = 360.0F;                ///< pixels

    /// Whether drawers get arbitrary rectangles; then the primitives' rectangles are not checked.
    bool isAnyRectangle = false;

    std::size_t rectangles = 0;
    std::size_t glyphs = 0;
};

inline Surface& surface() {
    static Surface instance;
    return instance;
}

inline void checkRectangle(const drawer::Drawer& primitive) {
    if (!surface().isAnyRectangle) {
        FUZZ_CHECK(isFinite(primitive.mPosition));
        FUZZ_CHECK(isFinite(primitive.mSize));
        FUZZ_CHECK(isFinite(glm::vec2(primitive.mTranslation)));
    }
    ++surface().rectangles;
}

class CheckedRect : public drawer::RectDrawer {
public:
    void draw() override { checkRectangle(*this); }
};

class CheckedMesh : public drawer::MeshDrawer {
public:
    void draw() override {
        checkRectangle(*this);
        for (const gui::Vertex& vertex : mVertices) {
            FUZZ_CHECK(isFinite(glm::vec2(vertex.x, vertex.y)));
        }
    }
    void clear() override { mVertices.clear(); }
};

class CheckedGrid : public drawer::GridDrawer {
public:
    CheckedGrid() : GridDrawer(std::make_unique<CheckedMesh>()) {}
    float getAspectRatio() override { return surface().aspectRatio; }
};

class CheckedText : public drawer::TextDrawer {
public:
    void drawGlyph(const gui::Glyph& /*glyph*/, const glm::mat4& transform, const glm::vec4& /*color*/,
                   char /*symbol*/) override {
        FUZZ_CHECK(isFinite(transform));
        ++surface().glyphs;
    }

    /// Maps to canvas fractions.
    glm::mat4 getTransform(const glm::vec2& size, const glm::vec2& position,
                           const glm::vec3& translation) override {
        const glm::mat4 transform =
            glm::translate(glm::mat4(1.0F), glm::vec3(position + size * 0.5F, 0.0F) + translation * 0.5F);
        return glm::scale(transform, glm::vec3(size * 0.5F, 1.0F));
    }
    float getAspectRatio() override { return surface().aspectRatio; }
    float getScreenHeight() override { return surface().height; }
};

inline std::unique_ptr<drawer::TextDrawer> createCheckedText() {
    return std::make_unique<CheckedText>();
}

}  // namespace fuzz
