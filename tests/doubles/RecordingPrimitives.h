#pragma once

#include "drawers/Drawer.h"
#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "drawers/TextblockDrawer.h"

#include <glm/gtc/matrix_transform.hpp>

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// Primitives that only record what they are asked to draw, in one list for all of them.
namespace doubles {

struct DrawCall {
    std::string what;  ///< "fill", "line", "grid", "background", or the text that was drawn
    glm::vec2 position{};
    glm::vec2 size{};
    glm::vec3 translation{};
    glm::vec4 color{};
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

class RecordingMesh : public drawer::MeshDrawer {
public:
    explicit RecordingMesh(std::string name) : mName(std::move(name)) {}
    void draw() override { drawCalls().push_back({mName, mPosition, mSize, mTranslation, mColor}); }
    void clear() override {
        ++mClears;
        mVertices.clear();
    }
    std::string mName;
    int mClears = 0;
};

class RecordingRect : public drawer::RectDrawer {
public:
    void draw() override { drawCalls().push_back({"background", mPosition, mSize, mTranslation, mColor}); }
};

class RecordingGrid : public drawer::GridDrawer {
public:
    RecordingGrid() : GridDrawer(std::make_unique<RecordingMesh>("grid")) {}
    float getAspectRatio() override { return mRatio; }
    RecordingMesh& mesh() { return static_cast<RecordingMesh&>(*mMesh); }
    float mRatio = 0.5F;
};

/// A text drawer on a surface of a given shape whose transform maps a box onto canvas fractions.
class RecordingText : public drawer::TextDrawer {
public:
    struct DrawnGlyph {
        char symbol;
        glm::mat4 transform;
        glm::vec4 color;
    };

    void drawGlyph(const gui::Glyph& /*glyph*/, const glm::mat4& transform, const glm::vec4& color,
                   char symbol) override {
        mGlyphs.push_back({symbol, transform, color});
        if (mGlyphs.size() == 1) {
            drawCalls().push_back({mText, mTextPosition, mTextSize, mTranslation, color});
        }
    }
    glm::mat4 getTransform(const glm::vec2& size, const glm::vec2& position,
                           const glm::vec3& translation) override {
        glm::mat4 transform(1.0F);
        transform = glm::translate(transform, glm::vec3(position + size * 0.5F, 0.0F) + translation * 0.5F);
        return glm::scale(transform, glm::vec3(size * 0.5F, 1.0F));
    }
    float getAspectRatio() override { return mSurfaceHeight / mSurfaceWidth; }
    float getScreenHeight() override { return mSurfaceHeight; }

    std::string drawnText() const {
        std::string text;
        for (const DrawnGlyph& glyph : mGlyphs) {
            text += glyph.symbol;
        }
        return text;
    }

    float mSurfaceWidth = 740.0F;
    float mSurfaceHeight = 360.0F;
    std::vector<DrawnGlyph> mGlyphs;
};

inline std::unique_ptr<drawer::TextDrawer> createRecordingText() {
    return std::make_unique<RecordingText>();
}

}  // namespace doubles
