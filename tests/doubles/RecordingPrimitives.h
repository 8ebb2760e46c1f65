#pragma once

#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"

#include <glm/gtc/matrix_transform.hpp>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Primitives that only record what they are asked to draw, in one list for all of them.
namespace doubles {

struct DrawCall {
    std::string what;  ///< "fill", "line", "grid", "background", "thumbnail", or the text that was drawn
    glm::vec2 position{};
    glm::vec2 size{};
    glm::vec3 translation{};
    const drawer::MeshDrawer* mesh = nullptr;  ///< if it was one
};

/// The calls since the list was last cleared.
inline std::vector<DrawCall>& drawCalls() {
    static std::vector<DrawCall> calls;
    return calls;
}

inline std::vector<std::string> drawnNames() {
    std::vector<std::string> names;
    for (const DrawCall& call : drawCalls()) {
        names.push_back(call.what);
    }
    return names;
}

/// The surface of all primitives, in pixels.
inline glm::vec2& surface() {
    static glm::vec2 size(740.0F, 360.0F);
    return size;
}

/// A drawer that draws nothing but an entry with its name.
template <typename Base>
struct Recording : Base {
    explicit Recording(std::string ownName) : name(std::move(ownName)) {}
    void draw() override { drawCalls().push_back({name, this->mPosition, this->mSize, this->mTranslation}); }
    std::string name;
};

struct RecordingRect : Recording<drawer::RectDrawer> {
    RecordingRect() : Recording("background") {}
};

struct RecordingMesh : Recording<drawer::MeshDrawer> {
    using Recording::Recording;
    void draw() override {
        Recording::draw();
        drawCalls().back().mesh = this;
    }
    void clear() override { mVertices.clear(); }
};

class RecordingGrid : public drawer::GridDrawer {
public:
    using GridDrawer::GridDrawer;
    float getAspectRatio() override { return surface().y / surface().x; }
};

/// Its transform maps a box onto canvas fractions.
class RecordingText : public drawer::TextDrawer {
public:
    struct DrawnGlyph {
        char symbol;
        glm::mat4 transform;
    };

    void draw() override {
        mGlyphs.clear();
        mDrawnText.clear();
        TextDrawer::draw();
    }
    void drawGlyph(const gui::Glyph& /*glyph*/, const glm::mat4& transform, const glm::vec4& /*color*/,
                   char symbol) override {
        if (mGlyphs.empty()) {
            drawCalls().push_back({mText, mTextPosition, mTextSize, mTranslation});
        }
        mGlyphs.push_back({symbol, transform});
        mDrawnText += symbol;
    }
    glm::mat4 getTransform(const glm::vec2& size, const glm::vec2& position,
                           const glm::vec3& translation) override {
        const glm::vec3 middle = glm::vec3(position + size * 0.5F, 0.0F) + translation * 0.5F;
        return glm::scale(glm::translate(glm::mat4(1.0F), middle), glm::vec3(size * 0.5F, 1.0F));
    }
    float getAspectRatio() override { return surface().y / surface().x; }
    float getScreenHeight() override { return surface().y; }

    // Of the last draw.
    std::vector<DrawnGlyph> mGlyphs;
    std::string mDrawnText;
};

inline std::unique_ptr<drawer::TextDrawer> createRecordingText() {
    return std::make_unique<RecordingText>();
}

}  // namespace doubles
