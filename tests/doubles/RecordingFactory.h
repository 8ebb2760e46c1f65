#pragma once

#include "doubles/RecordingPrimitives.h"
#include "scene/PrimitiveFactory.h"

#include <memory>
#include <utility>

namespace doubles {

/// A layer whose primitives record what they are asked to draw.
class RecordingFactory : public scene::PrimitiveFactory {
public:
    std::unique_ptr<drawer::MeshDrawer> createMesh(scene::Topology topology) override {
        static constexpr const char* NAMES[] = {"fill", "line", "grid", "bars"};
        return std::make_unique<RecordingMesh>(NAMES[static_cast<int>(topology)]);
    }
    std::unique_ptr<drawer::RectDrawer> createRect() override { return std::make_unique<RecordingRect>(); }
    std::unique_ptr<drawer::GridDrawer> createGrid(std::unique_ptr<drawer::MeshDrawer> lines) override {
        return std::make_unique<RecordingGrid>(std::move(lines));
    }
    std::unique_ptr<drawer::TextDrawer> createText() override { return createRecordingText(); }
    std::unique_ptr<drawer::Drawer> createThumbnail() override {
        return std::make_unique<Recording<drawer::Drawer>>("thumbnail");
    }
    glm::uvec2 getSurfaceSize() const override { return mSize; }
    void setClip(const glm::vec2& position, const glm::vec2& size) override {
        drawCalls().push_back({"clip", position, size});
    }
    void clearClip() override { drawCalls().push_back({"unclip"}); }

    glm::vec2& mSize = surface() = glm::vec2(740.0F, 360.0F);
};

}  // namespace doubles
